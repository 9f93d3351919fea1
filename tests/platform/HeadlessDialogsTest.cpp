// Without an operator every box is answered with its first button, and a question is logged with the
// answer given in the operator's place.

#include "platform/Dialogs.h"
#include "support/QtPrinters.h"

#include <gtest/gtest.h>

namespace tv {
namespace {

TEST(HeadlessDialogs, AQuestionIsAnsweredYesAndSaysSo) {
    QStringList lines;
    HeadlessDialogs dialogs([&](const QString& line) { lines << line; });
    EXPECT_EQ(dialogs.messageBox(QStringLiteral("Save changes?"), QStringLiteral("Tolvane"), MsgButtons::YesNoCancel,
                                 MsgIcon::Question),
              MsgAnswer::Yes);
    EXPECT_EQ(dialogs.messageBox(QStringLiteral("Port busy"), QStringLiteral("Tolvane"), MsgButtons::OkCancel,
                                 MsgIcon::Warning),
              MsgAnswer::Ok);
    EXPECT_EQ(lines, QStringList({QStringLiteral("message box: [Tolvane] Save changes? (answered yes)"),
                                  QStringLiteral("message box: [Tolvane] Port busy")}));
}

}  // namespace
}  // namespace tv
