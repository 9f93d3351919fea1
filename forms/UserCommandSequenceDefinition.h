#pragma once
// The editor of one user command sequence: its name, its button's tooltip, and sixteen commands with
// their notes. Every change is stored at once; there is no OK or Cancel.

#include "forms/Controls.h"
#include "forms/Form.h"

namespace tv {

class UserCommandSequenceDefinition : public Form {
public:
    static constexpr int kSteps = 16;
    explicit UserCommandSequenceDefinition(EventLoop& loop);

    Label SequenceNameLabel{this, QStringLiteral("SequenceNameLabel")};
    TextBox SequenceName{this, QStringLiteral("SequenceName")};
    Label FunctionLabel{this, QStringLiteral("FunctionLabel")};
    TextBox SequenceTooltip{this, QStringLiteral("SequenceTooltip")};
    Label CommandLabel{this, QStringLiteral("CommandLabel")};
    Label NoteLabel{this, QStringLiteral("NoteLabel")};
    ControlArray<Label> SequenceLabel{this, QStringLiteral("SequenceLabel"), 0, kSteps - 1};
    ControlArray<TextBox> CmdValue{this, QStringLiteral("CmdValue"), 0, kSteps - 1};
    ControlArray<TextBox> CmdNote{this, QStringLiteral("CmdNote"), 0, kSteps - 1};
    CommandButton ConfigComHelpCmd{this, QStringLiteral("ConfigComHelpCmd")};
};

}  // namespace tv
