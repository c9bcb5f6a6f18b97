[playlist]
numberofentries=2
File1=http://a.example:8000/
Title1=(#1 - 95/100) A
Length1=-1
File2=http://b.example:8010/live
Title2=(#2 - 10/100) B
Length2=-1
Version=2
