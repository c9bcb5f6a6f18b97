[playlist]
NumberOfEntries=1
File1=http://radio.example.org/live
Title1=Live
Version=2
