#include "core/RadioLink.h"

#include "core/CoreView.h"
#include "core/KavComm.h"
#include "core/RadioState.h"
#include "core/SelectedRadio.h"
#include "platform/EventLoop.h"
#include "services/Common.h"
#include "services/Errors.h"

namespace tv {

namespace {
// A long fixed-length reply is shown in rows of this many bytes.
constexpr int kCaptureRowBytes = 14;

QString decimalImage(const QByteArray& text) {
    QString d;
    for (char ch : text) d += QStringLiteral("%1 ").arg(int(std::uint8_t(ch)), 3, 10, QLatin1Char('0'));
    return d;
}

QString hexImage(const QByteArray& text) {
    QString h;
    for (char ch : text) h += QStringLiteral("%1 ").arg(QString::number(int(std::uint8_t(ch)), 16).toUpper(), 2);
    return h;
}
}  // namespace

RadioLink::RadioLink(Common& common, KavComm& comm, SelectedRadio& radio, RadioState& state, CoreView& view)
    : ExpectTimer(common.loop(), QStringLiteral("ExpectTimer")),
      common_(common),
      comm_(comm),
      radio_(radio),
      state_(state),
      view_(view) {
    rcv_.reserve(kRcvBufferSize);
    ExpectTimer.TimerEvent = [this] {
        ExpectTimer.setEnabled(false);
        ExpectTimeout();
    };
}

void RadioLink::Reset() {
    ExpectTimer.setEnabled(false);
    RcvCount = 0;
    ExpectedBytes = 0;
    ExpectOperation.clear();
}

// ---- sending ----

void RadioLink::SendCommand(const QByteArray& text) {
    Guard("KavModule.SendCommand", [&] {
        const ProtocolTraits& t = radio_.traits();
        if (t.echoesOnBus) {
            // The bus echoes every frame back into the receive path, which shows it in the monitor.
            if (common_.DebugEnabled()) {
                common_.DebugLog(QStringLiteral("KavModule.SendCommand: Hex = ") + hexImage(text));
                common_.DebugLog(QStringLiteral("KavModule.SendCommand: Dec = ") + decimalImage(text));
            }
        } else if (t.framing != Framing::None) {
            ++MessageCounter;
            if (view_.captureEnabled()) {
                const QString prefix = QStringLiteral("%1@%2: ")
                                           .arg(MessageCounter, 4, 10, QLatin1Char('0'))
                                           .arg(common_.loop().localNow().toString(QStringLiteral("hhmm.ss")));
                view_.DisplayLine(prefix, decimalImage(text), hexImage(text), QString::fromLatin1(text));
            }
        }
        ++sentMessages;
        comm_.WritePort(text);
    });
}

// ---- receiving ----

QString RadioLink::capturePrefix(const QString& counterText) const {
    return counterText + QLatin1Char('@') + common_.loop().localNow().toString(QStringLiteral("hhmm.ss")) +
           QStringLiteral(": ");
}

bool RadioLink::collectByte(std::uint8_t byte) {
    if (RcvCount >= kRcvBufferSize) {
        // A run without an end mark: report once, start collecting afresh, end this read.
        comm_.DisableCommRXEvents();
        common_.loop().yield();
        common_.ReportError(kErrOverflow, QStringLiteral("KavModule.HandleIncomingChar"),
                            QStringLiteral("Receive buffer overflow"));
        comm_.EnableCommRXEvents();
        RcvCount = 0;
        return false;
    }
    if (rcv_.size() < RcvCount + 1) rcv_.resize(RcvCount + 1);
    rcv_[RcvCount++] = char(byte);
    if (view_.captureEnabled()) {
        CaptureDecimalLine += QStringLiteral("%1 ").arg(int(byte), 3, 10, QLatin1Char('0'));
        CaptureHexLine += QStringLiteral("%1 ").arg(QString::number(int(byte), 16).toUpper(), 2);
        // Control characters would upset the display: they show as one placeholder character.
        CaptureAsciiLine += byte < 32 ? QChar(1) : QChar(QLatin1Char(char(byte)));
    }
    return true;
}

void RadioLink::finishCapture() {
    if (!view_.captureEnabled()) return;
    ++MessageCounter;
    view_.DisplayLine(capturePrefix(QStringLiteral("%1").arg(MessageCounter, 4, 10, QLatin1Char('0'))),
                      CaptureDecimalLine, CaptureHexLine, CaptureAsciiLine);
    CaptureDecimalLine.clear();
    CaptureHexLine.clear();
    CaptureAsciiLine.clear();
}

bool RadioLink::decode() {
    const int generation = radio_.generation();
    // The buffer itself, shared rather than copied: bytes that come in while the frame is decoded (in a
    // nested pass of the loop) are written to a copy of their own, and the frame stays as it was.
    rcv_.resize(RcvCount);
    const QByteArray frame = rcv_;
    if (Protocol* p = radio_.protocol()) p->Decode(frame);
    RcvCount = 0;
    return radio_.generation() == generation;
}

void RadioLink::deliverPendingNote() {
    QString text;
    if (!view_.takePendingNote(&text)) return;
    view_.DisplayLine(capturePrefix(QStringLiteral("    ")), text, text, text);
}

void RadioLink::HandleIncomingChar(const QByteArray& text) {
    Guard("KavModule.HandleIncomingChar", [&] {
        if (radio_.RadioIndex < 0) return;  // the bytes wait in the port
        if (!comm_.PortOpened()) {
            view_.showPortUnavailable();
            comm_.EnableCommRXEvents();
            return;
        }
        comm_.DisableCommRXEvents();
        QByteArray chunk = text.isEmpty() ? comm_.ReadPort() : text;
        while (!chunk.isEmpty()) {
            const ProtocolTraits traits = radio_.traits();
            if (traits.framing == Framing::EndMark) {
                for (char ch : chunk) {
                    const auto b = std::uint8_t(ch);
                    if (!collectByte(b)) return;
                    if (b == traits.endMark) {
                        finishCapture();
                        // The message chose another radio: its port is set up anew, events included.
                        if (!decode()) return;
                    }
                }
            } else if (traits.framing == Framing::ExpectedLength && RcvCount < ExpectedBytes) {
                // Nothing announced (or the reply already complete): the chunk is not ours to show.
                for (char ch : chunk) {
                    if (!collectByte(std::uint8_t(ch))) return;
                    ++CaptureRowCount;
                    if (RcvCount == ExpectedBytes) {
                        ExpectTimer.setEnabled(false);
                        finishCapture();
                        CaptureRowCount = 0;
                        ExpectedBytes = 0;
                        if (!decode()) return;
                    } else if (CaptureRowCount >= kCaptureRowBytes) {
                        finishCapture();
                        CaptureRowCount = 0;
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

void RadioLink::Expect(const QString& operation, int byteCount) {
    Guard("KavModule.Expect", [&] {
        // A radio that came back may have left half a reply in the port.
        if (!state_.Responding) comm_.FlushPort();
        view_.showAwaitedReply(operation + QStringLiteral(" expecting ") + QString::number(byteCount) +
                               QStringLiteral(" bytes"));
        // A fresh wait of its own: a reply awaited before doesn't shorten it.
        ExpectTimer.setEnabled(false);
        ExpectTimer.setInterval(int(kExpectTimeout.count()));
        RcvCount = 0;
        ExpectedBytes = byteCount;
        ExpectOperation = operation;
        ExpectTimer.setEnabled(true);
    });
}

void RadioLink::ExpectTimeout() {
    Guard("KavModule.ExpectTimeout", [&] {
        view_.showAwaitedReply(QString());
        if (!CaptureDecimalLine.isEmpty() && view_.captureEnabled()) finishCapture();
        // A radio already counted as silent keeps its wait: queued commands stay behind it until a
        // polled reply comes.
        if (state_.Responding) {
            ExpectedBytes = 0;
            state_.ReportSilent();
        }
        if (onWaitEnded) onWaitEnded();
    });
}

bool RadioLink::writesReachTheLine() const {
    const RadioInfo* r = radio_.info();
    return !r || !r->serialPort || comm_.PortOpened();
}

}  // namespace tv
