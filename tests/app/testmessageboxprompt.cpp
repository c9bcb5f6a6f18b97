#include "app/messageboxprompt.h"

#include <QApplication>
#include <QMessageBox>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

// Enter on a question gives its default answer: No where Yes would destroy something.
TEST(MessageBoxPrompt, EnterGivesTheQuestionsDefaultAnswer)
{
    MessageBoxPrompt prompt;
    for (const auto byDefault : {Prompt::Answer::No, Prompt::Answer::Yes}) {
        QString shown;
        // The box is modal: the user's Enter comes from the event loop it runs.
        QTimer::singleShot(0, [&shown] {
            for (QWidget *top : QApplication::topLevelWidgets()) {
                if (auto *box = qobject_cast<QMessageBox *>(top); box && box->isVisible()) {
                    shown = box->text();
                    QTest::keyClick(box, Qt::Key_Return);
                }
            }
        });
        const bool yes = prompt.askYesNo(u"Delete it?"_s, u"Tunecatch"_s, Prompt::Icon::Warning, byDefault);
        EXPECT_EQ(shown, u"Delete it?"_s);
        EXPECT_EQ(yes, byDefault == Prompt::Answer::Yes);
    }
}

} // namespace
