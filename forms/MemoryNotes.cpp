#include "forms/MemoryNotes.h"

namespace tv {

MemoryNotes::MemoryNotes(EventLoop& loop) : Form(loop, QStringLiteral("MemoryNotes"), QStringLiteral("Tolvane Memory Notes")) {
    Describe(DateCmd, QStringLiteral("Insert Timestamp"), QStringLiteral("insert date and time into notes"));
    Memory.setVisible(false);
    Offset.setVisible(false);
    setWidth(420);
    setHeight(220);
}

}  // namespace tv
