#include "app/messageboxprompt.h"

#include <QApplication>
#include <QFileDialog>
#include <QMessageBox>

namespace {

QMessageBox::Icon toIcon(Prompt::Icon icon)
{
    switch (icon) {
    case Prompt::Icon::Information:
        return QMessageBox::Information;
    case Prompt::Icon::Warning:
        return QMessageBox::Warning;
    case Prompt::Icon::Critical:
        return QMessageBox::Critical;
    case Prompt::Icon::Question:
        return QMessageBox::Question;
    }
    return QMessageBox::NoIcon;
}

} // namespace

void MessageBoxPrompt::message(const QString &text, const QString &title, Icon icon)
{
    QMessageBox box(toIcon(icon), title, text, QMessageBox::Ok, QApplication::activeWindow());
    box.exec();
}

bool MessageBoxPrompt::askYesNo(const QString &text, const QString &title, Icon icon, Answer byDefault)
{
    QMessageBox box(toIcon(icon), title, text, QMessageBox::Yes | QMessageBox::No, QApplication::activeWindow());
    box.setDefaultButton(byDefault == Answer::No ? QMessageBox::No : QMessageBox::Yes);
    return box.exec() == QMessageBox::Yes;
}

QString MessageBoxPrompt::chooseOpenFile(const QString &title, const QString &folder, const QString &filter)
{
    return QFileDialog::getOpenFileName(QApplication::activeWindow(), title, folder, filter);
}
