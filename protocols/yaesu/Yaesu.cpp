#include "protocols/yaesu/Yaesu.h"

#include "core/CommandQueue.h"
#include "core/RadioLink.h"
#include "core/RadioState.h"
#include "protocols/yaesu/YaesuFilterGroups.h"
#include "services/Common.h"

#include <chrono>

namespace tv {

namespace {
// The small radios are tried only this seldom once they stop answering: each try costs a full wait.
constexpr std::chrono::milliseconds kSilentSmallRadioInterval{5000};
// The FT-767 answers its handshake's acknowledge with its whole state: status, frequency, VFOs, memories.
constexpr int k767StateBytes = 86;
constexpr int k767EchoBytes = 5;

const QString kGetOpData = QStringLiteral("GetOpData");
const QString kCommandEcho = QStringLiteral("CommandEcho");

QByteArray catOnBlock() {
    return YaesuBlock(0, 0, 0, 0, 0x00);
}
QByteArray catOffBlock() {
    return YaesuBlock(0, 0, 0, 1, 0x00);
}
// The handshake's steps as its trace names them.
QString stepName767(YaesuProtocol::Handshake step) {
    switch (step) {
        case YaesuProtocol::Handshake::CatOn:
            return QStringLiteral("CATON");
        case YaesuProtocol::Handshake::Cmd:
            return QStringLiteral("CMD");
        case YaesuProtocol::Handshake::CatOff:
            return QStringLiteral("CATOFF");
        case YaesuProtocol::Handshake::Poll:
            return QStringLiteral("POLL");
        case YaesuProtocol::Handshake::Idle:
            break;
    }
    return QString();
}
QByteArray ackBlock() {
    return YaesuBlock(0, 0, 0, 0, 0x0B);
}
// The small radios' memory read of the byte whose bit 0 tells VFO B.
QByteArray vfoFlagRead() {
    return YaesuBlock(0, 0x55, 0, 0, 0xBB);
}
std::uint8_t low(int v) {
    return std::uint8_t(v);
}
}  // namespace

YaesuProtocol::YaesuProtocol(ProtocolContext& context, const RadioInfo& radio)
    : c_(context), radio_(radio), model_(FindYaesuModel(radio.model)) {
    traits_.framing = Framing::ExpectedLength;
    traits_.interrogation = InterrogationRule::Forced;
    traits_.filterGroupAfterModeReport = model_ && !model_->smallGroup;
    traits_.waitsAfterFrequency = model_ && model_->smallGroup;
    traits_.holdsRadioUntilReleased = model_ && model_->start == YaesuStart::Handshake;
    traits_.commandsAfterBringUp = model_ && model_->start == YaesuStart::CatOn;
    traits_.silentPollIntervalMs = model_ && model_->slowWhenSilent ? int(kSilentSmallRadioInterval.count()) : 0;
    traits_.stepsWithOwnCommand = model_ && model_->ownStep;
}

QString YaesuProtocol::DisplayName(const RadioInfo& radio) const {
    return QStringLiteral("Yaesu ") + radio.model;
}

QString YaesuProtocol::FineStepToolTip(bool up) const {
    if (!model_ || !model_->ownStep) return QString();
    return up ? QStringLiteral("QSY up minimum step (10 or 100 Hz)")
              : QStringLiteral("QSY down minimum step (10 or 100 Hz)");
}

QString YaesuProtocol::OfflineCaption(bool responding) const {
    return responding ? QString() : QStringLiteral(" - offline");
}

void YaesuProtocol::send(const QByteArray& block) {
    c_.link.SendCommand(block);
}

void YaesuProtocol::expect(int bytes, const QString& operation) {
    c_.link.Expect(operation, bytes);
}

// ---- bring-up ----

void YaesuProtocol::BringUp() {
    if (model_) {
        switch (model_->start) {
            case YaesuStart::Handshake:
                FT767Command.clear();
                FT767State = Handshake::Idle;
                FT767SplitOn = false;
                c_.state.VFOAFreq = 0;
                c_.state.VFOBFreq = 0;
                break;
            case YaesuStart::CatOn:
                // The radio stays under CAT from now on: nothing turns it off again.
                send(catOnBlock());
                break;
            case YaesuStart::Probe:
                // Its one-byte answer only proves the radio is there.
                expect(1, QStringLiteral("GetFT990Startup"));
                send(YaesuBlock(0, 0, 0, 1, 0x10));
                break;
            case YaesuStart::FilterGroups:
                // The window's group editor and lists follow the model's filters from here.
                YaesuReadSelector = 0;
                c_.state.ReportFilterGroupModel(&YaesuMpFilterGroups());
                break;
            case YaesuStart::OwnStep:  // its tooltips say so; nothing is sent
            case YaesuStart::None:
                break;
        }
    }
}

// ---- the queue ----

void YaesuProtocol::Execute(const XcvrCmd& c) {
    if (!model_) return;  // a model outside the table is sent nothing
    const bool on = c.theArg != 0;
    switch (c.theCmd) {
        case XcvrCmdFreq:
            sendSetting(YaesuFrequencyBlock(model_->commands, c.theFreq), 5);
            break;
        case XcvrCmdMode:
            // The queue has shown the mode already.
            sendSetting(YaesuModeBlock(model_->commands, YaesuModeByte(model_->series, c.theMode)), 8);
            break;
        case XcvrCmdFilters:
            setFilter(c.theArg2, low(c.theArg));
            break;
        case XcvrCmdDual:
            if (model_->dual) send(YaesuBlock(0, 0, 0, on ? 1 : 0, 0x83));
            break;
        case XcvrCmdSplit:
            setSplit(on);
            break;
        case XcvrCmdVFOA:
        case XcvrCmdVFOB:
            selectVfo(c.theCmd == XcvrCmdVFOB);
            break;
        case XcvrCmdVFOEqual:
            copyVfo();
            break;
        case XcvrCmdVFOXch:
            exchangeVfos();
            break;
        case XcvrCmdRequestFreq:
            RequestFrequency();
            break;
        case XcvrCmdRequestMode:
            RequestMode();
            break;
        case XcvrCmdPTT:
            key(c.theArg);
            break;
        case XcvrCmdSwitchVFOs:
            if (model_->smallGroup) send(YaesuBlock(0, 0, 0, 0, 0x81));
            break;
        case XcvrCmdPower:
            setPower(on);
            break;
        case XcvrCmdLock:
            if (model_->smallGroup) {
                expect(1, QStringLiteral("LockStatus"));
                send(YaesuBlock(0, 0, 0, 0, on ? 0x00 : 0x80));
            }
            break;
        case XcvrCmdSBFreq:
            setSecondFrequency(c.theFreq);
            break;
        case XcvrCmdStepFreq:
            if (model_->ownStep) send(YaesuBlock(0, 0, 0, low(c.theArg), 0x8E));
            break;
        default:
            break;  // no Yaesu command for the rest
    }
}

void YaesuProtocol::sendSetting(const QByteArray& block, int handshakeReplyBytes) {
    if (model_->commands == YaesuCommandSet::Handshake)
        Execute767Command(kGetOpData, handshakeReplyBytes, block);
    else
        send(block);
}

void YaesuProtocol::setFilter(int filter, std::uint8_t code) {
    if (!model_->filters) return;
    // The first byte picks the filter: 1 the second IF's, 2 the third IF's, 0 the sub receiver's.
    if (filter == FilterFirstIF)
        send(YaesuBlock(1, 0, 0, code, 0x8C));
    else if (filter == FilterSecondIF)
        send(YaesuBlock(2, 0, 0, code, 0x8C));
    else if (filter == FilterSub)
        send(YaesuBlock(0, 0, 0, code, 0x8C));
}

void YaesuProtocol::setSplit(bool on) {
    switch (model_->split) {
        case YaesuSplitForm::Classic01:
            send(YaesuBlock(0, 0, 0, on ? 1 : 0, 0x01));
            break;
        case YaesuSplitForm::Answered02:
            expect(1, QStringLiteral("SplitStatus"));
            send(YaesuBlock(0, 0, 0, 0, on ? 0x02 : 0x82));
            break;
        case YaesuSplitForm::Toggle767:
            // Its one split command toggles: sent only when the radio isn't so already.
            if (on != FT767SplitOn) Execute767Command(kGetOpData, 26, YaesuBlock(0, 0, 0, 0x30, 0x0A));
            break;
        case YaesuSplitForm::None:
            break;
    }
}

void YaesuProtocol::selectVfo(bool b) {
    switch (model_->vfo) {
        case YaesuVfoForm::Classic05:
            send(YaesuBlock(0, 0, 0, b ? 1 : 0, 0x05));
            break;
        case YaesuVfoForm::ReadFlag:
            // These radios only toggle: read which VFO is on, and toggle if it is the other.
            expect(2, b ? QStringLiteral("SetVFOB") : QStringLiteral("SetVFOA"));
            send(vfoFlagRead());
            break;
        case YaesuVfoForm::Handshake09:
            Execute767Command(kGetOpData, 5, YaesuBlock(0, 0, 0, b ? 1 : 0, 0x09));
            break;
        case YaesuVfoForm::None:
            break;
    }
}

void YaesuProtocol::copyVfo() {
    switch (model_->copy) {
        case YaesuCopyForm::Op85:
            send(YaesuBlock(0, 0, 0, 0, 0x85));
            break;
        case YaesuCopyForm::Switching81: {
            // Over to the other VFO, which then takes this one's mode and frequency, and back.
            CommandQueue& q = c_.queue;
            send(YaesuBlock(0, 0, 0, 0, 0x81));
            q.SetXcvrWait();
            q.SetXcvrMode(c_.state.RadioMode);
            q.SetXcvrWait();
            q.SetXcvrFreq(c_.state.RadioFreq);
            q.SetXcvrWait();
            q.SetXcvrSwitchVFOs();
            q.SetXcvrWait();
            break;
        }
        case YaesuCopyForm::ByQueue:
            copyVfoByQueue();
            break;
        case YaesuCopyForm::None:
            break;
    }
}

void YaesuProtocol::exchangeVfos() {
    switch (model_->exchange) {
        case YaesuExchangeForm::Op05:
            send(YaesuBlock(0, 0, 0, 1, 0x05));
            break;
        case YaesuExchangeForm::Toggle81:
            send(YaesuBlock(0, 0, 0, 0, 0x81));
            break;
        case YaesuExchangeForm::ByQueue:
            exchangeVfosByQueue();
            break;
        case YaesuExchangeForm::None:
            break;
    }
}

void YaesuProtocol::key(int arg) {
    const bool down = arg == 1;
    switch (model_->ptt) {
        case YaesuPttForm::Classic0F:
            send(YaesuBlock(0, 0, 0, low(arg), 0x0F));
            break;
        case YaesuPttForm::Answered08:
            expect(1, QStringLiteral("PTTStatus"));
            send(YaesuBlock(0, 0, 0, 0, down ? 0x08 : 0x88));
            break;
        case YaesuPttForm::Plain08:
            send(YaesuBlock(0, 0, 0, 0, down ? 0x08 : 0x88));
            break;
        case YaesuPttForm::None:
            break;
    }
}

void YaesuProtocol::setPower(bool on) {
    if (model_->power == YaesuPowerForm::Small0F)
        send(YaesuBlock(0, 0, 0, 0, on ? 0x0F : 0x8F));
    else if (model_->power == YaesuPowerForm::CatOn00)
        send(YaesuBlock(0, 0, 0, 0, on ? 0x00 : 0x80));
}

void YaesuProtocol::copyVfoByQueue() {
    // No command copies a VFO on these radios: VFO A's frequency is set on VFO B by hand, as it were.
    RadioState& s = c_.state;
    CommandQueue& q = c_.queue;
    const double a = s.VFOAFreq;
    if (s.CurrentVFO != 0) {
        q.SetXcvrFreq(a);
        q.SetXcvrWait();
    } else {
        q.SetXcvrVFOB();
        q.SetXcvrWait();
        q.SetXcvrFreq(a);
        q.SetXcvrWait();
        q.SetXcvrVFOA();
        q.SetXcvrWait();
    }
    q.InterrogateRadio();
}

void YaesuProtocol::exchangeVfosByQueue() {
    // Each VFO is given the other's frequency as it stands now, the one in use last.
    RadioState& s = c_.state;
    CommandQueue& q = c_.queue;
    const double oldA = s.VFOAFreq, oldB = s.VFOBFreq;
    if (s.CurrentVFO != 0) {
        q.SetXcvrFreq(oldA);
        q.SetXcvrWait();
        q.SetXcvrVFOA();
        q.SetXcvrWait();
        q.SetXcvrFreq(oldB);
        q.SetXcvrWait();
        q.SetXcvrVFOB();
    } else {
        q.SetXcvrFreq(oldB);
        q.SetXcvrWait();
        q.SetXcvrVFOB();
        q.SetXcvrWait();
        q.SetXcvrFreq(oldA);
        q.SetXcvrWait();
        q.SetXcvrVFOA();
    }
    q.SetXcvrWait();
    q.InterrogateRadio();
}

void YaesuProtocol::setSecondFrequency(double kHz) {
    RadioState& s = c_.state;
    CommandQueue& q = c_.queue;
    switch (model_->second) {
        case YaesuSecondForm::ExchangeWithWaits:
            q.SetXcvrWait();
            q.SetXcvrVFOXch();
            q.SetXcvrWait();
            q.SetXcvrMode(s.RadioMode);
            q.SetXcvrWait();
            q.SetXcvrFreq(kHz);
            q.SetXcvrWait();
            q.SetXcvrVFOXch();
            q.SetXcvrWait();
            break;
        case YaesuSecondForm::ViaVfoB:
            q.SetXcvrVFOB();
            q.SetXcvrMode(s.RadioMode);
            q.SetXcvrFreq(kHz);
            q.SetXcvrVFOA();
            break;
        case YaesuSecondForm::ViaExchange:
            q.SetXcvrVFOXch();
            q.SetXcvrMode(s.RadioMode);
            q.SetXcvrFreq(kHz);
            q.SetXcvrVFOXch();
            break;
        case YaesuSecondForm::None:
            break;
    }
}

// ---- polling ----

void YaesuProtocol::sendMeterRead() {
    if (!model_ || model_->meter == YaesuMeterForm::None) return;
    expect(model_->meterLength, QStringLiteral("YaesuMeter"));
    send(YaesuBlock(0, 0, 0, model_->meterParam, model_->meterOp));
}

void YaesuProtocol::sendFlagsRead() {
    expect(model_->flagsLength, QStringLiteral("YaesuStatus"));
    send(YaesuBlock(0, 0, 0, 1, 0xFA));
}

int YaesuProtocol::InterrogationStep(int phase) {
    // A reply still on its way isn't talked into: the radio would take the request for the rest of
    // its command, and the reply would be counted short. A wait that timed out holds nothing.
    if (c_.link.replyOutstanding() && c_.link.ExpectTimer.Enabled()) return phase;
    const bool flags = model_ && model_->flagsLength > 0;
    switch (phase) {
        case 0:
        case 2:
            if (radio_.sMeter)
                sendMeterRead();
            else
                RequestFrequency();
            return phase + 1;
        case 1:
            RequestFrequency();
            return 2;
        case 3:
            RequestMode();
            return flags ? 4 : 0;
        case 4:
            if (flags)
                sendFlagsRead();
            else
                RequestFrequency();
            return 0;
        default:
            return 0;
    }
}

void YaesuProtocol::RequestFrequency() {
    if (!model_) return;
    if (model_->commands == YaesuCommandSet::Handshake) {
        Poll767();
        return;
    }
    // The MP family reads VFO A alone once its flags say a memory or the sub receiver is in use.
    const bool shortRead = model_->readBySelector && YaesuReadSelector != 0;
    expect(shortRead ? 16 : model_->readLength, kGetOpData);
    send(YaesuBlock(0, 0, 0, shortRead ? 2 : model_->readParam, model_->readOp));
}

void YaesuProtocol::RequestMode() {
    if (!model_ || model_->modeOnFrequencyRead) return;
    RequestFrequency();
}

// ---- the FT-767's handshake ----

void YaesuProtocol::Trace767(const QString& text) {
    c_.common.DebugLog(QStringLiteral("Trace767: ") + text);
}

void YaesuProtocol::Execute767Command(const QString& operation, int count, const QByteArray& command) {
    FT767ReplyOperation = operation;
    FT767ReplyCount = count;
    FT767Command = command;
    FT767State = Handshake::CatOn;
    Trace767(QStringLiteral("Execute767Command - CATON start"));
    expect(k767EchoBytes, kCommandEcho);
    send(catOnBlock());
}

void YaesuProtocol::Poll767() {
    FT767State = Handshake::Poll;
    Trace767(QStringLiteral("Poll767 - POLL start"));
    expect(k767EchoBytes, kCommandEcho);
    send(catOnBlock());
}

void YaesuProtocol::step767(bool echo) {
    if (FT767State == Handshake::Idle) return;
    if (echo) {
        // Every echo is acknowledged; the acknowledge is answered by the radio's state, in the command
        // step by the command's own reply.
        Trace767(QStringLiteral("CommandEcho - ") + stepName767(FT767State));
        if (FT767State == Handshake::Cmd)
            expect(FT767ReplyCount, FT767ReplyOperation);
        else
            expect(k767StateBytes, kGetOpData);
        send(ackBlock());
        return;
    }
    switch (FT767State) {
        case Handshake::CatOn:
            Trace767(QStringLiteral("GetOpData - CATON start"));
            FT767State = Handshake::Cmd;
            expect(k767EchoBytes, kCommandEcho);
            send(FT767Command);
            break;
        case Handshake::Cmd:
        case Handshake::Poll:
            Trace767(QStringLiteral("GetOpData - ") + stepName767(FT767State));
            FT767State = Handshake::CatOff;
            expect(k767EchoBytes, kCommandEcho);
            send(catOffBlock());
            break;
        case Handshake::CatOff:
            Trace767(QStringLiteral("GetOpData - CATOFF end"));
            FT767State = Handshake::Idle;
            // Last: a switch to another transceiver may replace this object here.
            c_.state.ReportControlReleased();
            break;
        case Handshake::Idle:
            break;
    }
}

// ---- receiving ----

void YaesuProtocol::Decode(const QByteArray& reply) {
    RadioState& s = c_.state;
    s.ReportAnswered();
    const QString op = c_.link.ExpectOperation;
    const bool handshake = model_ && model_->commands == YaesuCommandSet::Handshake;
    if (handshake && (op == kCommandEcho || op == kGetOpData)) {
        // The handshake keeps its operation: the step arms the next wait itself.
        if (op == kGetOpData) Handle767Status(reply);
        step767(op == kCommandEcho);
        return;
    }
    const int b1 = reply.isEmpty() ? 0 : std::uint8_t(reply[0]);
    if (!model_) {
        // A model outside the table reads nothing.
    } else if (op == QLatin1String("YaesuStatus")) {
        decodeFlags(reply);
    } else if (op == QLatin1String("YaesuMeter")) {
        s.ReportMeter(DecodeYaesuMeter(model_->meter, reply));
    } else if (op == kGetOpData) {
        decodeOpData(reply);
    } else if (op == QLatin1String("GetStatus")) {
        s.CurrentVFO = (b1 >> 4) & 1;
    } else if (op == QLatin1String("SetVFOA")) {
        if (b1 & 0x01) queueVfoCheck();
    } else if (op == QLatin1String("SetVFOB")) {
        if (!(b1 & 0x01)) queueVfoCheck();
    }
    // "GetFT990Startup", "CommandEcho" of other radios, and the split, lock and PTT answers say only
    // that the radio is there.
    c_.link.ExpectOperation.clear();
}

void YaesuProtocol::queueVfoCheck() {
    CommandQueue& q = c_.queue;
    q.SetXcvrWait();
    q.SetXcvrVFOXch();
    q.SetXcvrWait();
    q.InterrogateRadio();
}

void YaesuProtocol::decodeOpData(const QByteArray& reply) {
    RadioState& s = c_.state;
    Common& common = c_.common;
    const YaesuSeries series = model_->series;
    const YaesuOpData d = DecodeYaesuOpData(series, reply, YaesuReadSelector);
    const QString name = radio_.model;
    auto number = [](double v) { return QString::number(v, 'g', 15); };
    if (series == YaesuSeries::FT990)
        common.DebugLog(QStringLiteral("FT990 status block ") +
                        QString::fromLatin1(reply.toHex(' ').toUpper()));
    switch (d.store) {
        case YaesuOpData::Store::VfoA:
            s.VFOAFreq = d.kHz;
            break;
        case YaesuOpData::Store::Selected:
            if (s.CurrentVFO != 0) {
                s.VFOBFreq = d.kHz;
                if (d.other) s.VFOAFreq = *d.other;
                common.DebugLog(name + QStringLiteral(" VFO B = ") + number(d.kHz));
            } else {
                s.VFOAFreq = d.kHz;
                if (d.other) s.VFOBFreq = *d.other;
                common.DebugLog(name + QStringLiteral(" VFO A = ") + number(d.kHz));
            }
            break;
        case YaesuOpData::Store::None:
            break;
    }
    if (d.vfoA) s.VFOAFreq = *d.vfoA;
    if (d.vfoB) s.VFOBFreq = *d.vfoB;
    c_.queue.SetXcvrCmdTimerInterval();
    s.UpdateRadioFreq(d.kHz);
    s.ReportFirstFrequency();
    if (series == YaesuSeries::MP) {
        mpModeStep(d);
        return;
    }
    s.UpdateXcvrMode(d.mode);
    if (series == YaesuSeries::FT747) {
        common.DebugLog(QStringLiteral("FT747 mode digit (hex) = ") +
                        QString::number(d.modeDigit, 16).toUpper());
        common.DebugLog(QStringLiteral("FT747 mode index       = ") + QString::number(d.mode));
    }
    // This radio never reports split: a split shown is the program's own and can't be trusted.
    if (d.clearsSplit) s.ReportSplit(false);
}

void YaesuProtocol::mpModeStep(const YaesuOpData& d) {
    RadioState& s = c_.state;
    const bool modeChanged = d.mode != LastFilterMode;
    if (modeChanged) LastFilterMode = d.mode;
    s.UpdateXcvrMode(d.mode);
    // The two main filters share a byte, a nibble each; the sub receiver's stands in its own byte.
    FilterStatus status;
    status.modeChanged = modeChanged;
    const YaesuFilterCodes main = SplitYaesuFilterByte(d.filterByte);
    status.codes = {main.q, main.r, d.subFilterByte >= 0 ? SplitYaesuFilterByte(d.subFilterByte).r : -1};
    s.ReportFilterStatus(status);
}

void YaesuProtocol::decodeFlags(const QByteArray& reply) {
    RadioState& s = c_.state;
    const YaesuFlags f = DecodeYaesuFlags(model_->flags, reply);
    s.ReportSplit(f.split);
    if (f.dual) s.ReportDual(*f.dual);
    s.CurrentVFO = f.vfo;
    if (f.readSelector) YaesuReadSelector = *f.readSelector;
    s.UpdateVFOCaption();
}

void YaesuProtocol::Handle767Status(const QByteArray& reply) {
    RadioState& s = c_.state;
    const Yaesu767Status st = Decode767Status(reply);
    FT767SplitOn = st.split;
    s.ReportSplit(st.split);
    Trace767(QStringLiteral("freq = ") + QString::number(st.kHz, 'g', 15));
    c_.queue.SetXcvrCmdTimerInterval();
    s.UpdateRadioFreq(st.kHz);
    // Only zero and non-zero matter: the VFO B bit is kept as the program's B.
    s.CurrentVFO = st.vfo != 0 ? 1 : 0;
    s.UpdateVFOCaption();
    s.ReportFirstFrequency();
    if (st.mode) {
        Trace767(QStringLiteral("ModeDigit = ") + QString::number(st.modeDigit));
        Trace767(QStringLiteral("Mode = ") + QString::number(*st.mode));
        s.UpdateXcvrMode(*st.mode);
    }
    if (st.vfoA) s.VFOAFreq = *st.vfoA;
    if (st.vfoB) s.VFOBFreq = *st.vfoB;
}

}  // namespace tv
