#include "forms/UserCommandSequenceDefinition.h"

namespace tv {

UserCommandSequenceDefinition::UserCommandSequenceDefinition(EventLoop& loop)
    : Form(loop, QStringLiteral("UserCommandSequenceDefinition"),
           QStringLiteral("Tolvane User-defined Command Sequence"), 3) {
    setWidth(620);
    setHeight(560);
    SequenceNameLabel.setCaption(QStringLiteral("Name"));
    FunctionLabel.setCaption(QStringLiteral("Function"));
    CommandLabel.setCaption(QStringLiteral("Command"));
    NoteLabel.setCaption(QStringLiteral("Note"));
    for (int i = 0; i < kSteps; ++i) SequenceLabel[i].setCaption(QString::number(i + 1));
    ConfigComHelpCmd.setCaption(QStringLiteral("Help"));
}

}  // namespace tv
