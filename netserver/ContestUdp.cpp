#include "netserver/ContestUdp.h"

#include "platform/EventLoop.h"

#include <QRegularExpression>
#include <QSysInfo>
#include <QUdpSocket>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <algorithm>
#include <cmath>

namespace tv {

namespace {
// The program's modes as the contest loggers name them; the first row of a mode is the name it is sent under.
struct ModeRow {
    const char* name;
    int mode;
};
constexpr ModeRow kModes[] = {
    {"LSB", RigLSB},    {"USB", RigUSB},  {"AM", RigAM},       {"CW", RigCW},        {"RTTY", RigRTTY},
    {"FM", RigFM},      {"WFM", RigWBFM}, {"CW-R", RigCWR},    {"RTTY-R", RigRTTYR}, {"PKT", RigPKT},
    {"WBFM", RigWBFM},  {"CWR", RigCWR},  {"RTTYR", RigRTTYR}, {"DIGI", RigPKT},     {"DATA", RigPKT},
    {"PKTUSB", RigPKT}, {"PSK", RigPKT},  {"NFM", RigFM},
};

QString sentModeName(int mode) {
    for (const ModeRow& r : kModes)
        if (r.mode == mode) return QString::fromLatin1(r.name);
    return QString();
}

const char* truth(bool on) {
    return on ? "True" : "False";
}

// A datagram longer than this is no command of the format.
constexpr qsizetype kMaxDatagram = 8 * 1024;
// Beyond any radio's dial, in tens of Hz (100 GHz).
constexpr std::int64_t kMaxTensOfHz = 10'000'000'000LL;
// Below this the sidebands of "SSB" follow the usual habit: lower below 10 MHz, upper above.
constexpr double kSidebandTurnHz = 10e6;
}  // namespace

QByteArray RadioInfoDatagram(const ContestRadioInfo& info) {
    QByteArray out;
    QXmlStreamWriter x(&out);
    x.setAutoFormatting(true);
    x.writeStartDocument();
    x.writeStartElement(QStringLiteral("RadioInfo"));
    x.writeTextElement(QStringLiteral("app"), QStringLiteral("Tolvane"));
    x.writeTextElement(QStringLiteral("StationName"), info.station);
    x.writeTextElement(QStringLiteral("RadioNr"), QString::number(info.radioNr));
    x.writeTextElement(QStringLiteral("Freq"), QString::number(info.rxHz / 10));
    x.writeTextElement(QStringLiteral("TXFreq"), QString::number(info.txHz / 10));
    x.writeTextElement(QStringLiteral("Mode"), info.mode);
    x.writeTextElement(QStringLiteral("IsRunning"), QStringLiteral("False"));
    x.writeTextElement(QStringLiteral("FocusRadioNr"), QString::number(info.radioNr));
    x.writeTextElement(QStringLiteral("IsStereo"), QStringLiteral("False"));
    x.writeTextElement(QStringLiteral("IsSplit"), QLatin1String(truth(info.split)));
    x.writeTextElement(QStringLiteral("ActiveRadioNr"), QString::number(info.radioNr));
    x.writeTextElement(QStringLiteral("IsTransmitting"), QLatin1String(truth(info.transmitting)));
    x.writeTextElement(QStringLiteral("RadioName"), info.radioName);
    x.writeTextElement(QStringLiteral("IsConnected"), QLatin1String(truth(info.connected)));
    x.writeEndElement();
    x.writeEndDocument();
    return out;
}

std::optional<ContestCommand> ParseContestCommand(const QByteArray& datagram, QString* why) {
    auto fail = [why](const QString& text) -> std::optional<ContestCommand> {
        if (why) *why = text;
        return std::nullopt;
    };
    if (datagram.size() > kMaxDatagram) return fail(QStringLiteral("too long"));
    QXmlStreamReader x(datagram);
    if (!x.readNextStartElement()) return fail(QStringLiteral("no XML element"));
    ContestCommand c;
    const QStringView root = x.name();
    if (root == QLatin1String("Radio_SetFrequency"))
        c.kind = ContestCommand::SetFrequency;
    else if (root == QLatin1String("Radio_SetMode"))
        c.kind = ContestCommand::SetMode;
    else
        return fail(QStringLiteral("not a command taken here: <%1>").arg(root.left(40)));
    bool haveValue = false;
    while (x.readNextStartElement()) {
        const QString name = x.name().toString();
        const QString text = x.readElementText(QXmlStreamReader::SkipChildElements).trimmed();
        if (x.hasError()) break;
        bool ok = false;
        if (name == QLatin1String("RadioNr")) {
            c.radioNr = text.toInt(&ok);
            if (!ok || c.radioNr < 1)
                return fail(QStringLiteral("RadioNr \"%1\" is no radio").arg(text.left(20)));
        } else if (c.kind == ContestCommand::SetFrequency &&
                   (name == QLatin1String("Frequency") || name == QLatin1String("Freq"))) {
            const double tens = text.toDouble(&ok);
            if (!ok || !std::isfinite(tens) || tens <= 0 || tens > double(kMaxTensOfHz))
                return fail(QStringLiteral("frequency \"%1\" is no frequency").arg(text.left(20)));
            c.hz = std::llround(tens * 10);
            haveValue = true;
        } else if (c.kind == ContestCommand::SetMode && name == QLatin1String("Mode")) {
            const QString upper = text.toUpper();
            if (upper == QLatin1String("SSB")) {
                c.sideband = true;
            } else {
                for (const ModeRow& r : kModes)
                    if (upper == QLatin1String(r.name)) c.mode = r.mode;
                if (c.mode < 0)
                    return fail(QStringLiteral("mode \"%1\" is not known here").arg(text.left(20)));
            }
            haveValue = true;
        }
    }
    if (x.hasError()) return fail(QStringLiteral("bad XML: ") + x.errorString());
    if (!haveValue)
        return fail(c.kind == ContestCommand::SetFrequency ? QStringLiteral("no <Frequency>")
                                                           : QStringLiteral("no <Mode>"));
    return c;
}

ContestUdp::ContestUdp(RigBackend& rig, EventLoop& loop)
    : rig_(rig), loop_(loop), timer_(loop.createTimer()), out_(new QUdpSocket(this)) {
    timer_->setInterval(int(kLookEvery.count()));
    timer_->onTick = [this] { look(); };
}

ContestUdp::~ContestUdp() = default;

QList<std::pair<QHostAddress, quint16>> ContestUdp::parseDestinations(const QString& text, QStringList* bad) {
    QList<std::pair<QHostAddress, quint16>> out;
    static const QRegularExpression separators(QStringLiteral("[\\s,;]+"));
    for (const QString& item : text.split(separators, Qt::SkipEmptyParts)) {
        const qsizetype colon = item.lastIndexOf(QLatin1Char(':'));
        QString host = colon > 0 ? item.left(colon) : item;
        if (host.startsWith(QLatin1Char('[')) && host.endsWith(QLatin1Char(']')))
            host = host.mid(1, host.size() - 2);
        if (host.compare(QLatin1String("localhost"), Qt::CaseInsensitive) == 0)
            host = QStringLiteral("127.0.0.1");
        bool ok = colon < 0;
        const uint port = colon > 0 ? item.mid(colon + 1).toUInt(&ok) : kDefaultPort;
        const QHostAddress address(host);
        if (!ok || port == 0 || port > 65535 || address.isNull()) {
            if (bad) *bad << item;
            continue;
        }
        out.append({address, quint16(port)});
    }
    return out;
}

void ContestUdp::configure(const ContestUdpConfig& config) {
    const bool newListener = config.listen != config_.listen || config.listenPort != config_.listenPort;
    const bool newDestinations =
        config.destinations != config_.destinations || (config.send && !config_.send);
    config_ = config;
    if (newDestinations) {
        QStringList bad;
        to_ = parseDestinations(config.destinations, &bad);
        if (!bad.isEmpty() && config.send)
            log(QStringLiteral("ContestUdp: not a host:port, left out: %1").arg(bad.join(QLatin1Char(' '))));
        sentOnce_ = false;  // the new list hears the radio at once
    }
    timer_->setEnabled(config.send);
    if (!newListener && bool(in_) == config.listen) return;
    if (in_) {
        in_->close();
        in_->deleteLater();
        in_ = nullptr;
        log(QStringLiteral("ContestUdp: no longer listening for commands"));
    }
    if (!config.listen) return;
    in_ = new QUdpSocket(this);
    // Loopback only, as the other doors: whoever reaches the port can retune the radio.
    if (!in_->bind(QHostAddress::LocalHost, config.listenPort)) {
        log(QStringLiteral("ContestUdp: cannot listen on 127.0.0.1:%1: %2")
                .arg(config.listenPort)
                .arg(in_->errorString()));
        delete in_;
        in_ = nullptr;
        return;
    }
    QObject::connect(in_, &QUdpSocket::readyRead, this, [this] { readPending(); });
    log(QStringLiteral("ContestUdp: listening on 127.0.0.1:%1 for Radio_SetFrequency and Radio_SetMode")
            .arg(in_->localPort()));
}

void ContestUdp::stop() {
    ContestUdpConfig off = config_;
    off.send = off.listen = false;
    configure(off);
}

bool ContestUdp::listening() const {
    return in_ != nullptr;
}

quint16 ContestUdp::listenPort() const {
    return in_ ? in_->localPort() : 0;
}

ContestRadioInfo ContestUdp::current() const {
    ContestRadioInfo i;
    i.station = QSysInfo::machineHostName();
    i.radioNr = rig_.radioNumber();
    i.connected = rig_.responding() && rig_.frequencyHz() > 0;
    i.radioName = rig_.caps().name;
    if (!i.connected) return i;  // no stale numbers for a radio that doesn't answer
    i.rxHz = std::llround(rig_.frequencyHz());
    i.split = rig_.split();
    i.txHz = i.split ? std::llround(rig_.txFrequencyHz()) : i.rxHz;
    i.mode = sentModeName(rig_.mode());
    i.transmitting = rig_.ptt();
    return i;
}

void ContestUdp::look() {
    if (!config_.send || to_.isEmpty()) return;
    const ContestRadioInfo info = current();
    const std::int64_t now = loop_.monotonicMs();
    if (sentOnce_ && info == sent_ && now - sentAtMs_ < std::chrono::milliseconds(kResendEvery).count())
        return;
    sent_ = info;
    sentOnce_ = true;
    sentAtMs_ = now;
    const QByteArray datagram = RadioInfoDatagram(info);
    for (const auto& [address, port] : to_) {
        if (out_->writeDatagram(datagram, address, port) >= 0) continue;
        // A destination that can't be reached is told once, not ten times a second.
        const QString error =
            QStringLiteral("%1:%2: %3").arg(address.toString()).arg(port).arg(out_->errorString());
        if (error != lastSendError_) log(QStringLiteral("ContestUdp: cannot send to ") + error);
        lastSendError_ = error;
    }
}

void ContestUdp::readPending() {
    while (in_ && in_->hasPendingDatagrams()) {
        QHostAddress from;
        quint16 port = 0;
        QByteArray datagram(qsizetype(std::max<qint64>(in_->pendingDatagramSize(), 0)), Qt::Uninitialized);
        const qint64 n = in_->readDatagram(datagram.data(), datagram.size(), &from, &port);
        if (n < 0) break;
        datagram.truncate(qsizetype(n));
        handle(datagram, QStringLiteral("%1:%2").arg(from.toString()).arg(port));
    }
}

void ContestUdp::handle(const QByteArray& datagram, const QString& from) {
    QString why;
    const std::optional<ContestCommand> c = ParseContestCommand(datagram, &why);
    if (!c) {
        // A flood of garbage leaves one line a second in the log, with a count of the rest.
        const std::int64_t now = loop_.monotonicMs();
        if (now < quietUntilMs_) {
            ++unlogged_;
            return;
        }
        QString line = QStringLiteral("ContestUdp: datagram from %1 ignored: %2").arg(from, why);
        if (unlogged_) line += QStringLiteral(" (and %1 more since the last such line)").arg(unlogged_);
        unlogged_ = 0;
        quietUntilMs_ = now + std::chrono::milliseconds(kIgnoredLogGap).count();
        log(line);
        return;
    }
    const int active = rig_.radioNumber();
    if (c->radioNr && c->radioNr != active) {
        log(QStringLiteral("ContestUdp: command from %1 for radio %2 ignored: radio %3 is in use")
                .arg(from)
                .arg(c->radioNr)
                .arg(active));
        return;
    }
    if (rig_.locked()) {
        log(QStringLiteral("ContestUdp: command from %1 ignored: client sets are locked").arg(from));
        return;
    }
    bool queued = false;
    if (c->kind == ContestCommand::SetFrequency) {
        queued = rig_.setFrequency(double(c->hz));
    } else {
        const int mode = c->sideband ? (rig_.frequencyHz() < kSidebandTurnHz ? RigLSB : RigUSB) : c->mode;
        queued = rig_.caps().modes[size_t(mode)] && rig_.setMode(mode, -1);
    }
    if (!queued)
        log(QStringLiteral("ContestUdp: command from %1 refused: the radio can't take it now").arg(from));
}

void ContestUdp::log(const QString& line) const {
    if (onLog) onLog(line);
}

}  // namespace tv
