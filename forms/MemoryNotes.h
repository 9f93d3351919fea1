#pragma once
// The notes editor of one memory, as a model. Which memory and which bank row it edits are held as
// text in two hidden boxes, as the window's parameters.

#include "forms/Controls.h"
#include "forms/Form.h"

namespace tv {

class MemoryNotes : public Form {
public:
    explicit MemoryNotes(EventLoop& loop);

    TextBox Notes{this, QStringLiteral("Notes")};
    CommandButton DateCmd{this, QStringLiteral("DateCmd")};
    TextBox Memory{this, QStringLiteral("Memory")};  // the memory number, 1 to 100
    TextBox Offset{this, QStringLiteral("Offset")};  // the bank row, 1 to 10
    Label Label1{this, QStringLiteral("Label1")};
    // Loaded at the first Ctrl-click of a recall button, then hidden and shown until the program ends.
    bool loaded = false;
};

}  // namespace tv
