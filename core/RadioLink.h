#pragma once
// The traffic of the link: what the program sends, shown in the monitor where the line doesn't echo
// it, and everything the radio sends, cut into messages by the framing of the radio's family, shown in
// the monitor as it comes, and handed to the family's decoder. For families whose replies have no end
// mark, a request announces the length of its reply (Expect) and a timer ends the wait.

#include "forms/Controls.h"

#include <QByteArray>
#include <QString>

#include <chrono>
#include <cstdint>
#include <functional>

namespace tv {

class Common;
class CoreView;
class KavComm;
class RadioState;
class SelectedRadio;

class RadioLink {
public:
    static constexpr int kRcvBufferSize = 2048;
    // A reply without an end mark is awaited this long; then the radio counts as not answering.
    static constexpr std::chrono::milliseconds kExpectTimeout{5000};

    RadioLink(Common& common, KavComm& comm, SelectedRadio& radio, RadioState& state, CoreView& view);

    // Puts one finished message on the link.
    void SendCommand(const QByteArray& text);
    // Bytes from the link: an empty argument means "read the port".
    void HandleIncomingChar(const QByteArray& text);
    // A fixed-length reply is awaited.
    void Expect(const QString& operation, int byteCount);
    void ExpectTimeout();
    QString GetExpect() const { return ExpectOperation; }
    // A change of radio: nothing collected or awaited survives it.
    void Reset();
    // A reply is awaited, and nothing may be sent into it.
    bool replyOutstanding() const { return ExpectedBytes >= 1; }
    // What is sent now reaches the radio: its port is open, or it is reached without one.
    bool writesReachTheLine() const;
    // Told when the wait for a reply has ended without it (the queue's unkey and next tick).
    std::function<void()> onWaitEnded;

    Timer ExpectTimer;
    int RcvCount = 0;
    int ExpectedBytes = 0;
    QString ExpectOperation = QStringLiteral("unknown");
    std::int32_t MessageCounter = 0;
    // Messages put on the line since the start, whatever the family (the monitor's counter is not).
    std::uint64_t sentMessages = 0;
    int CaptureRowCount = 0;

private:
    // Collect one byte (false: the buffer overflowed and reading ends), finish a message in the monitor,
    // hand it to the decoder, and deliver the operator's pending note.
    bool collectByte(std::uint8_t byte);
    void finishCapture();
    // False when the radio was changed by what the message said: the rest of the chunk isn't its.
    bool decode();
    void deliverPendingNote();
    QString capturePrefix(const QString& counterText) const;

    Common& common_;
    KavComm& comm_;
    SelectedRadio& radio_;
    RadioState& state_;
    CoreView& view_;
    QByteArray rcv_;
    QString CaptureDecimalLine, CaptureHexLine, CaptureAsciiLine;
};

}  // namespace tv
