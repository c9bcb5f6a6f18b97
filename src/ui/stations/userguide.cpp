#include "ui/stations/userguide.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <QTextDocument>
#include <QUrl>

namespace UserGuide {

QString page(const QString &installFolder, const QString &outputFolder)
{
    QFile readme(QDir(installFolder).filePath(readmeFile));
    if (!readme.open(QIODevice::ReadOnly))
        return {};
    QTextDocument document;
    document.setMarkdown(QString::fromUtf8(readme.readAll()));
    QString html = document.toHtml();
    // The README names its pictures relative to itself.
    const QString base = QUrl::fromLocalFile(QDir(installFolder).absolutePath() + u'/').toString();
    html.replace(QStringLiteral("<head>"),
                 QStringLiteral("<head><base href=\"%1\"/>").arg(base.toHtmlEscaped()));

    const QString path = QDir(outputFolder).filePath(pageFile);
    QDir().mkpath(outputFolder);
    QSaveFile out(path);
    if (!out.open(QIODevice::WriteOnly) || out.write(html.toUtf8()) < 0 || !out.commit())
        return {};
    return path;
}

} // namespace UserGuide
