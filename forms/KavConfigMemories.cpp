// The "Memories" tab of the configuration window as designed: the bank titles and the file commands.

#include "forms/KavConfig.h"

namespace tv {

void KavConfig::describeMemoriesTab() {
    Describe(Frame7, QStringLiteral("Memory Banks"));
    Describe(BankColumnLabel, QStringLiteral("Bank"));
    Describe(TitleColumnLabel, QStringLiteral("Title"));
    for (int b = 0; b <= 9; ++b) {
        BankNumberLabel[b].setCaption(QString::number(b + 1));
        BankToolTip[b].setToolTip(QStringLiteral("Title for memory bank %1").arg(b + 1));
    }
    Describe(ExportMemoriesCmd, QStringLiteral("Export Memories"), QStringLiteral("Save all memories to a select file"));
    Describe(ImportMemoriesCmd, QStringLiteral("Import Memories"), QStringLiteral("Import memories from a select file"));
    Describe(MemoryHelpCmd, QStringLiteral("Help"), QStringLiteral("display memories help"));
}

}  // namespace tv
