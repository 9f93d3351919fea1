// The memory bank pane of the main window as designed; the logic sets the run-time captions and tips.

#include "forms/KavMain.h"

namespace tv {

void KavMain::describeMemoryBank() {
    Describe(Label35, QStringLiteral("Sel"));
    Describe(FreqLabel, QStringLiteral("Frequency"));
    Describe(ModeLabel, QStringLiteral("Mode"));
    Describe(FilterMemoryLabel, QStringLiteral("Filter Group"));
    Describe(Label38, QStringLiteral("Save"));
    Describe(MemoryNotesLabel, QStringLiteral("Memory notes"));
    MemoryNotesLabel.setVisible(false);
    for (int i = 1; i <= kMemoryRows; ++i) {
        SelCmd[i].setCaption(QString::number(i));
        StoreCmd[i].setCaption(QString::number(i));
        MemoryNotesDisplay[i].setVisible(false);
        FilterMemoryCombo[i].setVisible(false);
    }
    FilterMemoryLabel.setVisible(false);
    for (int b = 0; b <= 9; ++b)
        Describe(MemoryBankCmd[b], QStringLiteral("B%1").arg(b + 1), QStringLiteral("select memory bank %1").arg(b + 1));
}

}  // namespace tv
