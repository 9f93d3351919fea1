// Captured messages on their way to the monitor.

#include "core/KavModule.h"

#include "forms/KavMessages.h"
#include "platform/EventLoop.h"
#include "services/Common.h"
#include "services/Errors.h"

namespace tv {

bool KavModule::captureEnabled() const { return messages_.CaptureEnabled.checked(); }

void KavModule::DisplayLine(const QString& prefix, const QString& decimalLine, const QString& hexLine,
                            const QString& asciiLine) {
    Guard("KavModule.DisplayLine", [&] {
        if (!captureEnabled()) return;
        common_.DebugLog(QStringLiteral("KavModule.DisplayLine: ") + prefix + QLatin1Char(' ') + hexLine);
        if (messages_.displayLength() > KavMessages::kDisplayLimit) {
            // The display is full: stop capturing rather than lose the oldest lines silently.
            {
                SetControlFlag(FlagCaptureEnabled, true);
                messages_.CaptureEnabled.setChecked(false);
            }
            loop().yield();
            messages_.overflow.Show();
            if (messages_.overflow.raiseRequested) messages_.overflow.raiseRequested();
            return;
        }
        static const QString crlf = QStringLiteral("\r\n");
        messages_.AppendToMessageDisplay(prefix + decimalLine + crlf, 0);
        messages_.AppendToMessageDisplay(prefix + hexLine + crlf, 1);
        messages_.AppendToMessageDisplay(prefix + asciiLine + crlf, 2);
        messages_.SetUnsavedData(true);
    });
}

}  // namespace tv
