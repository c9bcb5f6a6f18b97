#include "ui/stations/frmabout.h"

#include "base/apppaths.h"
#include "base/appinfo.h"
#include "base/shell.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QUrl>
#include <QVBoxLayout>

namespace {

// A folder as a link; the text shows the path the way the system writes it.
QLabel *folderLink(const QString &folder, QWidget *parent)
{
    const QString url = QUrl::fromLocalFile(folder).toString();
    auto *label = new QLabel(QStringLiteral("<a href=\"%1\">%2</a>")
                                 .arg(url.toHtmlEscaped(), QDir::toNativeSeparators(folder).toHtmlEscaped()),
                             parent);
    label->setTextFormat(Qt::RichText);
    label->setTextInteractionFlags(Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
    return label;
}

} // namespace

frmAbout::frmAbout(Shell &shell, QWidget *parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("frmAbout"));
    setWindowTitle(tr("About %1").arg(AppInfo::title));
    setModal(true);

    auto *lblName = new QLabel(AppInfo::title, this);
    lblName->setObjectName(QStringLiteral("lblName"));
    QFont big = lblName->font();
    big.setPointSizeF(big.pointSizeF() * 1.6);
    big.setBold(true);
    lblName->setFont(big);
    auto *lblVersion = new QLabel(tr("Version %1").arg(AppInfo::version()), this);
    lblVersion->setObjectName(QStringLiteral("lblVersion"));
    auto *lblSummary = new QLabel(
        tr("Keeps a list of internet radio stations, plays them and records them to MP3 files."), this);
    lblSummary->setObjectName(QStringLiteral("lblSummary"));
    lblSummary->setWordWrap(true);

    auto *lnkData = folderLink(AppPaths::dataFolder(), this);
    lnkData->setObjectName(QStringLiteral("lnkData"));
    auto *lnkRec = folderLink(AppPaths::recordingsFolder(), this);
    lnkRec->setObjectName(QStringLiteral("lnkRec"));
    auto *folders = new QFormLayout;
    folders->addRow(tr("Data folder:"), lnkData);
    folders->addRow(tr("Recordings:"), lnkRec);
    for (QLabel *link : {lnkData, lnkRec}) {
        qobject_cast<QLabel *>(folders->labelForField(link))->setBuddy(link);
        connect(link, &QLabel::linkActivated, this,
                [&shell](const QString &url) { shell.openDocument(url); });
    }

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    buttons->button(QDialogButtonBox::Close)->setObjectName(QStringLiteral("cmdClose"));
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->setSpacing(8);
    layout->addWidget(lblName);
    layout->addWidget(lblVersion);
    layout->addWidget(lblSummary);
    layout->addSpacing(6);
    layout->addLayout(folders);
    layout->addWidget(buttons);
}
