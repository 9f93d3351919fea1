// All bytes from the link enter here: they are cut into messages by the framing of the selected
// radio's family, shown in the monitor as they come, and handed to that family's decoder.

#include "core/KavModule.h"

#include "forms/KavMain.h"
#include "forms/KavMessages.h"
#include "platform/EventLoop.h"
#include "services/Common.h"
#include "services/Errors.h"

namespace tv {

namespace {
constexpr std::uint8_t kCivEnd = 253;
constexpr int kExpectTimeoutMs = 5000;
// A long fixed-length reply is shown in rows of this many bytes.
constexpr int kCaptureRowBytes = 14;
}  // namespace

QString KavModule::capturePrefix(const QString& counterText) const {
    return counterText + QLatin1Char('@') + loop().localNow().toString(QStringLiteral("hhmm.ss")) +
           QStringLiteral(": ");
}

bool KavModule::collectByte(std::uint8_t byte) {
    if (RcvCount >= kRcvBufferSize) {
        // A run without an end mark: report once, start collecting afresh, end this read.
        comm_.DisableCommRXEvents();
        loop().yield();
        common_.ReportError(kErrOverflow, QStringLiteral("KavModule.HandleIncomingChar"),
                            QStringLiteral("Receive buffer overflow"));
        comm_.EnableCommRXEvents();
        RcvCount = 0;
        return false;
    }
    RcvBuffer[size_t(++RcvCount)] = byte;
    if (captureEnabled()) {
        CaptureDecimalLine += QStringLiteral("%1 ").arg(int(byte), 3, 10, QLatin1Char('0'));
        CaptureHexLine += QStringLiteral("%1 ").arg(QString::number(int(byte), 16).toUpper(), 2);
        // Control characters would upset the display: they show as one placeholder character.
        CaptureAsciiLine += byte < 32 ? QChar(1) : QChar(QLatin1Char(char(byte)));
    }
    return true;
}

void KavModule::finishCapture() {
    if (!captureEnabled()) return;
    ++MessageCounter;
    DisplayLine(capturePrefix(QStringLiteral("%1").arg(MessageCounter, 4, 10, QLatin1Char('0'))),
                CaptureDecimalLine, CaptureHexLine, CaptureAsciiLine);
    CaptureDecimalLine.clear();
    CaptureHexLine.clear();
    CaptureAsciiLine.clear();
}

void KavModule::deliverPendingNote() {
    Note& note = messages_.note;
    if (!note.pending()) return;
    const QString text = note.NoteText.text();
    DisplayLine(capturePrefix(QStringLiteral("    ")), text, text, text);
    note.NoteText.setText(QString());
    note.NoteLabel.setCaption(note.PermLabel.caption());
}

void KavModule::HandleIncomingChar(const QByteArray& text) {
    Guard("KavModule.HandleIncomingChar", [&] {
        if (RadioIndex < 0) return;  // the bytes wait in the port
        if (!comm_.PortOpened()) {
            main_.setCaption(common_.info().title + QStringLiteral(" (could not obtain comm port)"));
            comm_.EnableCommRXEvents();
            return;
        }
        comm_.DisableCommRXEvents();
        QByteArray chunk = text.isEmpty() ? comm_.ReadPort() : text;
        const QChar supplier = GetRadioSupplier();
        Protocol* decoder = protocol();
        auto decode = [&] {
            if (decoder) decoder->Decode();
        };
        while (!chunk.isEmpty()) {
            if (supplier == QLatin1Char('I') || supplier == QLatin1Char('T') || supplier == QLatin1Char('K') ||
                supplier == QLatin1Char('N')) {
                const std::uint8_t end = supplier == QLatin1Char('K')   ? std::uint8_t(';')
                                         : supplier == QLatin1Char('N') ? std::uint8_t(13)
                                                                        : kCivEnd;
                for (char ch : chunk) {
                    const auto b = std::uint8_t(ch);
                    if (!collectByte(b)) return;
                    if (b == end) {
                        finishCapture();
                        decode();
                        RcvCount = 0;
                    }
                }
            } else if (supplier == QLatin1Char('Y')) {
                // Nothing announced (or the reply already complete): the chunk is not ours to show.
                if (RcvCount < ExpectedBytes) {
                    for (char ch : chunk) {
                        if (!collectByte(std::uint8_t(ch))) return;
                        ++CaptureRowCount;
                        if (RcvCount == ExpectedBytes) {
                            messages_.ExpectTimer.setEnabled(false);
                            finishCapture();
                            CaptureRowCount = 0;
                            ExpectedBytes = 0;
                            decode();
                            if (XcvrSwitchedInDecode) {
                                // The switch has set the port up anew, events included.
                                XcvrSwitchedInDecode = false;
                                RcvCount = 0;
                                return;
                            }
                            RcvCount = 0;
                        } else if (CaptureRowCount >= kCaptureRowBytes) {
                            finishCapture();
                            CaptureRowCount = 0;
                        }
                    }
                }
            }
            // Any other family has no framing on this link: the chunk is dropped.
            deliverPendingNote();
            chunk = comm_.ReadPort();
        }
        comm_.EnableCommRXEvents();
    });
}

void KavModule::Expect(const QString& operation, int byteCount) {
    Guard("KavModule.Expect", [&] {
        // A radio that came back may have left half a reply in the port.
        if (!YaesuResponding) comm_.FlushPort();
        messages_.setCaption(MessagesCaption + QStringLiteral(" (") + operation + QStringLiteral(" expecting ") +
                             QString::number(byteCount) + QStringLiteral(" bytes)"));
        // A fresh wait of its own: a reply awaited before doesn't shorten it.
        messages_.ExpectTimer.setEnabled(false);
        messages_.ExpectTimer.setInterval(kExpectTimeoutMs);
        RcvCount = 0;
        ExpectedBytes = byteCount;
        ExpectOperation = operation;
        messages_.ExpectTimer.setEnabled(true);
    });
}

void KavModule::ExpectTimeout() {
    Guard("KavModule.ExpectTimeout", [&] {
        messages_.setCaption(MessagesCaption);
        if (!CaptureDecimalLine.isEmpty() && captureEnabled()) finishCapture();
        if (YaesuResponding) {
            YaesuResponding = false;
            ExpectedBytes = 0;
            UpdateCaption();
        }
    });
}

}  // namespace tv
