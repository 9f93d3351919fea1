#include "netserver/FlrigRpc.h"

#include "netserver/Rigctl.h"

#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <cmath>
#include <functional>

namespace tv {

namespace {

// The protocol level these answers follow: clients compare it to decide which calls they may make.
constexpr const char* kProtocolVersion = "1.4.7";
// Nesting of arrays in a request: no method takes more than a flat list.
constexpr int kMaxDepth = 8;

// The mode names, by program mode: those the server's clients know (Hamlib maps each of them).
constexpr const char* kModeNames[kRigModeCount] = {"LSB", "USB",  "AM",   "CW",     "RTTY",
                                                   "FM",  "WFM",  "CW-R", "RTTY-R", "USB-D"};

int modeFromName(const QString& name) {
    for (int i = 0; i < kRigModeCount; ++i)
        if (name.compare(QLatin1String(kModeNames[i]), Qt::CaseInsensitive) == 0) return i;
    // The spellings other radios use for the same modes.
    static const struct {
        const char* name;
        int mode;
    } kAliases[] = {{"CWR", RigCWR}, {"CW-L", RigCWR}, {"RTTYR", RigRTTYR}, {"RTTY-L", RigRTTYR},
                    {"PKT", RigPKT}, {"DATA-U", RigPKT}, {"DIGU", RigPKT}, {"PKTUSB", RigPKT},
                    {"W-FM", RigWBFM}};
    for (const auto& a : kAliases)
        if (name.compare(QLatin1String(a.name), Qt::CaseInsensitive) == 0) return a.mode;
    return -1;
}

bool readValue(QXmlStreamReader& x, QVariant* out, int depth);

// Inside <array>: <data> and its <value>s, up to </array>.
bool readArray(QXmlStreamReader& x, QVariant* out, int depth) {
    QVariantList items;
    while (x.readNextStartElement()) {
        if (x.name() != QLatin1String("data")) return false;
        while (x.readNextStartElement()) {
            if (x.name() != QLatin1String("value")) return false;
            QVariant item;
            if (!readValue(x, &item, depth + 1)) return false;
            items.append(item);
        }
    }
    *out = items;
    return !x.hasError();
}

// Positioned on <value>: reads to its end.
bool readValue(QXmlStreamReader& x, QVariant* out, int depth) {
    if (depth > kMaxDepth) return false;
    QString text;
    bool typed = false;
    while (!x.atEnd()) {
        const auto token = x.readNext();
        if (token == QXmlStreamReader::Characters) {
            if (!typed) text += x.text();
        } else if (token == QXmlStreamReader::StartElement) {
            typed = true;
            const auto type = x.name();
            if (type == QLatin1String("array")) {
                if (!readArray(x, out, depth)) return false;
                continue;
            }
            if (type == QLatin1String("struct")) return false;  // no method here takes one
            const QString v = x.readElementText(QXmlStreamReader::ErrorOnUnexpectedElement);
            if (x.hasError()) return false;
            bool ok = true;
            if (type == QLatin1String("i4") || type == QLatin1String("int")) {
                *out = v.trimmed().toInt(&ok);
            } else if (type == QLatin1String("double")) {
                const double d = v.trimmed().toDouble(&ok);
                ok = ok && std::isfinite(d);
                *out = d;
            } else if (type == QLatin1String("boolean")) {
                ok = v.trimmed() == QLatin1String("0") || v.trimmed() == QLatin1String("1");
                *out = v.trimmed() == QLatin1String("1");
            } else if (type == QLatin1String("string")) {
                *out = v;
            } else {
                return false;
            }
            if (!ok) return false;
        } else if (token == QXmlStreamReader::EndElement) {
            if (x.name() != QLatin1String("value")) continue;
            if (!typed) *out = text;  // an untyped value is a string
            return true;
        }
    }
    return false;
}

void writeValue(QXmlStreamWriter& w, const QVariant& v) {
    // A list of names is an array of strings: converted before its <value> opens, or it would hold a second.
    if (v.typeId() == QMetaType::QStringList) {
        const QStringList items = v.toStringList();
        writeValue(w, QVariant(QVariantList(items.cbegin(), items.cend())));
        return;
    }
    w.writeStartElement(QStringLiteral("value"));
    switch (v.typeId()) {
        case QMetaType::Int:
            w.writeTextElement(QStringLiteral("i4"), QString::number(v.toInt()));
            break;
        case QMetaType::Double:
            w.writeTextElement(QStringLiteral("double"), QString::number(v.toDouble(), 'f', 6));
            break;
        case QMetaType::Bool:
            w.writeTextElement(QStringLiteral("boolean"), v.toBool() ? QStringLiteral("1") : QStringLiteral("0"));
            break;
        case QMetaType::QVariantList:
            w.writeStartElement(QStringLiteral("array"));
            w.writeStartElement(QStringLiteral("data"));
            for (const QVariant& item : v.toList()) writeValue(w, item);
            w.writeEndElement();
            w.writeEndElement();
            break;
        default:
            w.writeTextElement(QStringLiteral("string"), v.toString());
            break;
    }
    w.writeEndElement();
}

QByteArray document(const std::function<void(QXmlStreamWriter&)>& body) {
    QByteArray out;
    QXmlStreamWriter w(&out);
    w.writeStartDocument();
    w.writeStartElement(QStringLiteral("methodResponse"));
    body(w);
    w.writeEndElement();
    w.writeEndDocument();
    return out;
}

}  // namespace

XmlRpcCall ParseXmlRpcCall(const QByteArray& raw) {
    XmlRpcCall call;
    // Hamlib's client sends <?clientid="hamlib(123)"?> after the declaration: no well-formed processing
    // instruction (its target isn't a name), which the reader would refuse. It is taken out, and only it.
    QByteArray body = raw;
    if (const qsizetype at = body.indexOf("<?clientid="); at >= 0) {
        const qsizetype end = body.indexOf("?>", at);
        if (end > at) body.remove(at, end + 2 - at);
    }
    QXmlStreamReader x(body);
    if (!x.readNextStartElement() || x.name() != QLatin1String("methodCall")) {
        call.error = QStringLiteral("no methodCall");
        return call;
    }
    while (x.readNextStartElement()) {
        if (x.name() == QLatin1String("methodName")) {
            call.method = x.readElementText().trimmed();
        } else if (x.name() == QLatin1String("params")) {
            while (x.readNextStartElement()) {
                if (x.name() != QLatin1String("param")) break;
                bool got = false;
                while (x.readNextStartElement()) {
                    QVariant v;
                    if (x.name() != QLatin1String("value") || !readValue(x, &v, 0)) {
                        call.error = QStringLiteral("a parameter is no value this server reads");
                        return call;
                    }
                    call.params.append(v);
                    got = true;
                }
                if (!got) call.params.append(QString());
            }
        } else {
            x.skipCurrentElement();
        }
    }
    if (x.hasError()) call.error = x.errorString();
    else if (call.method.isEmpty()) call.error = QStringLiteral("no methodName");
    return call;
}

QByteArray XmlRpcResponse(const QVariant& value) {
    return document([&](QXmlStreamWriter& w) {
        w.writeStartElement(QStringLiteral("params"));
        w.writeStartElement(QStringLiteral("param"));
        writeValue(w, value);
        w.writeEndElement();
        w.writeEndElement();
    });
}

QByteArray XmlRpcFault(int code, const QString& text) {
    return document([&](QXmlStreamWriter& w) {
        w.writeStartElement(QStringLiteral("fault"));
        w.writeStartElement(QStringLiteral("value"));
        w.writeStartElement(QStringLiteral("struct"));
        w.writeStartElement(QStringLiteral("member"));
        w.writeTextElement(QStringLiteral("name"), QStringLiteral("faultCode"));
        writeValue(w, code);
        w.writeEndElement();
        w.writeStartElement(QStringLiteral("member"));
        w.writeTextElement(QStringLiteral("name"), QStringLiteral("faultString"));
        writeValue(w, text);
        w.writeEndElement();
        w.writeEndElement();
        w.writeEndElement();
        w.writeEndElement();
    });
}

QStringList FlrigSession::methods() {
    return {QStringLiteral("main.get_version"),  QStringLiteral("system.listMethods"),
            QStringLiteral("rig.get_xcvr"),      QStringLiteral("rig.get_modes"),
            QStringLiteral("rig.get_bws"),       QStringLiteral("rig.get_pwrmeter_scale"),
            QStringLiteral("rig.get_agc_labels"), QStringLiteral("rig.get_info"),
            QStringLiteral("rig.get_vfo"),       QStringLiteral("rig.get_vfoA"),
            QStringLiteral("rig.get_vfoB"),      QStringLiteral("rig.get_AB"),
            QStringLiteral("rig.get_split"),     QStringLiteral("rig.get_mode"),
            QStringLiteral("rig.get_modeA"),     QStringLiteral("rig.get_modeB"),
            QStringLiteral("rig.get_bw"),        QStringLiteral("rig.get_bwA"),
            QStringLiteral("rig.get_bwB"),       QStringLiteral("rig.get_ptt"),
            QStringLiteral("rig.get_smeter"),    QStringLiteral("rig.get_DBM"),
            QStringLiteral("rig.get_pwrmeter"),  QStringLiteral("rig.get_SWR"),
            QStringLiteral("rig.get_power"),     QStringLiteral("rig.get_notch"),
            QStringLiteral("rig.get_sideband"),  QStringLiteral("rig.set_vfo"),
            QStringLiteral("rig.set_vfoA"),      QStringLiteral("rig.set_vfoB"),
            QStringLiteral("rig.set_verify_vfoA"), QStringLiteral("rig.set_verify_vfoB"),
            QStringLiteral("rig.set_mode"),      QStringLiteral("rig.set_modeA"),
            QStringLiteral("rig.set_modeB"),     QStringLiteral("rig.set_bw"),
            QStringLiteral("rig.set_bandwidth"), QStringLiteral("rig.set_bwA"),
            QStringLiteral("rig.set_bwB"),       QStringLiteral("rig.set_ptt"),
            QStringLiteral("rig.set_ptt_fast"),  QStringLiteral("rig.set_split"),
            QStringLiteral("rig.set_AB"),        QStringLiteral("rig.tune"),
            QStringLiteral("rig.cat_string"),    QStringLiteral("rig.shutdown")};
}

QByteArray FlrigSession::answer(const QByteArray& body) {
    const XmlRpcCall c = ParseXmlRpcCall(body);
    if (!c.error.isEmpty()) return XmlRpcFault(1, QStringLiteral("bad request: ") + c.error);
    QString fault;
    const QVariant value = call(c, &fault);
    if (!fault.isEmpty()) return XmlRpcFault(2, fault);
    return XmlRpcResponse(value);
}

QVariant FlrigSession::call(const XmlRpcCall& c, QString* fault) {
    const QString& m = c.method;
    const RigCaps caps = rig_.caps();
    auto param = [&](int i) { return i < c.params.size() ? c.params[i] : QVariant(); };
    auto number = [&](int i, double* v) {
        bool ok = false;
        *v = param(i).toDouble(&ok);
        return ok && std::isfinite(*v);
    };
    auto refuse = [&](const QString& why) {
        *fault = why;
        return QVariant();
    };
    // Sets answer 0 when queued, a fault when the program couldn't take them.
    auto done = [&](bool queued) { return queued ? QVariant(0) : refuse(QStringLiteral("not taken now")); };
    // B is the other VFO; a client that names the one in use asks for the receive frequency.
    const bool onB = rig_.vfo() == RigVfo::B || rig_.vfo() == RigVfo::Sub;
    auto frequencyOf = [&](bool b) {
        return QString::number(std::llround(b != onB ? rig_.txFrequencyHz() : rig_.frequencyHz()));
    };
    auto modeName = [&](int mode) {
        return mode >= 0 && mode < kRigModeCount ? QString::fromLatin1(kModeNames[mode]) : QString();
    };
    auto widthOf = [&](int mode) {
        const int inForce = rig_.passbandHz();
        return QString::number(inForce > 0 ? inForce : rigctlNormalPassband(mode));
    };
    auto setFrequency = [&](bool b) -> QVariant {
        double hz = 0;
        if (!number(0, &hz) || hz <= 0 || hz > 1e11) return refuse(QStringLiteral("no frequency"));
        return done(b != onB ? rig_.setTxFrequency(hz) : rig_.setFrequency(hz));
    };
    auto setMode = [&]() -> QVariant {
        const int mode = modeFromName(param(0).toString().trimmed());
        if (mode < 0 || !caps.modes[size_t(mode)]) return refuse(QStringLiteral("no such mode on this radio"));
        return done(rig_.setMode(mode, -1));
    };

    if (m == QLatin1String("main.get_version")) return QString::fromLatin1(kProtocolVersion);
    if (m == QLatin1String("system.listMethods")) return methods();
    if (m == QLatin1String("rig.shutdown")) return 0;  // the operator ends this program, not a client
    if (!caps.radio) return refuse(QStringLiteral("no radio is selected"));
    if (m == QLatin1String("rig.get_xcvr") || m == QLatin1String("rig.get_info")) return caps.name;
    const bool getter = m.startsWith(QLatin1String("rig.get_"));
    // A radio that doesn't answer gives no values and takes no changes, but an unkey always goes.
    const bool unkey = m.startsWith(QLatin1String("rig.set_ptt")) && param(0).toDouble() == 0;
    if (!rig_.responding() && !unkey && m != QLatin1String("rig.get_modes") && m != QLatin1String("rig.get_bws"))
        return refuse(getter ? QStringLiteral("the radio doesn't answer") : QStringLiteral("the radio doesn't answer; nothing sent"));
    // While a client holds the lock, retuning from clients is ignored, as on the rigctld server.
    if (rig_.locked() && (m.startsWith(QLatin1String("rig.set_vfo")) || m.startsWith(QLatin1String("rig.set_verify_vfo")) ||
                          m.startsWith(QLatin1String("rig.set_mode")) || m.startsWith(QLatin1String("rig.set_bw")) ||
                          m == QLatin1String("rig.set_bandwidth")))
        return 0;
    if (m == QLatin1String("rig.get_modes")) {
        QStringList names;
        for (int i = 0; i < kRigModeCount; ++i)
            if (caps.modes[size_t(i)]) names << QString::fromLatin1(kModeNames[i]);
        return names;
    }
    if (m == QLatin1String("rig.get_bws")) {
        // One list, headed by its label as the clients expect: the widths the radio offers in this mode.
        QVariantList widths{QStringLiteral("Bandwidth")};
        const QList<int> choices = rig_.passbandChoices(rig_.mode());
        if (choices.isEmpty()) widths << widthOf(rig_.mode());
        for (int w : choices) widths << QString::number(w);
        return QVariantList{widths};
    }
    if (m == QLatin1String("rig.get_pwrmeter_scale")) return 1;
    if (m == QLatin1String("rig.get_agc_labels")) return QStringList{};
    if (m == QLatin1String("rig.get_vfo")) return frequencyOf(onB);
    if (m == QLatin1String("rig.get_vfoA")) return frequencyOf(false);
    if (m == QLatin1String("rig.get_vfoB")) return frequencyOf(true);
    if (m == QLatin1String("rig.get_AB")) return onB ? QStringLiteral("B") : QStringLiteral("A");
    if (m == QLatin1String("rig.get_split")) return rig_.split() ? 1 : 0;
    if (m == QLatin1String("rig.get_mode") || m == QLatin1String("rig.get_modeA")) return modeName(rig_.mode());
    if (m == QLatin1String("rig.get_modeB")) return modeName(rig_.txMode());
    if (m == QLatin1String("rig.get_bw") || m == QLatin1String("rig.get_bwA") || m == QLatin1String("rig.get_bwB"))
        return QVariantList{widthOf(rig_.mode()), QString()};
    if (m == QLatin1String("rig.get_ptt")) return rig_.ptt() ? 1 : 0;
    // fldigi reads both meters as text (a number would throw in its XML-RPC library, and no meter shows).
    if (m == QLatin1String("rig.get_smeter")) {
        if (!caps.meter) return QStringLiteral("0");
        return QString::number(std::lround(std::clamp(rig_.meter(), 0.0, 1.0) * 100));
    }
    if (m == QLatin1String("rig.get_DBM")) {
        if (!caps.meter) return -130;
        // S9 is -73 dBm; the strength is in dB over S9.
        return -73 + rigctlStrength(std::clamp(rig_.meter(), 0.0, 1.0), rig_.meterLabel());
    }
    if (m == QLatin1String("rig.get_pwrmeter") || m == QLatin1String("rig.get_power")) {
        const int watts = caps.levels[size_t(RigLevel::RfPower)]
                              ? int(std::lround(rig_.level(RigLevel::RfPower).value_or(0) * 100))
                              : 0;
        if (m == QLatin1String("rig.get_pwrmeter")) return QString::number(watts);
        return watts;
    }
    if (m == QLatin1String("rig.get_SWR")) {
        if (!caps.levels[size_t(RigLevel::Swr)]) return 1.0;
        return rig_.level(RigLevel::Swr).value_or(1.0);
    }
    if (m == QLatin1String("rig.get_notch")) return 0;
    if (m == QLatin1String("rig.get_sideband")) {
        const int mode = rig_.mode();
        return mode == RigLSB || mode == RigCWR || mode == RigRTTYR ? QStringLiteral("L") : QStringLiteral("U");
    }
    if (m == QLatin1String("rig.set_vfo")) return setFrequency(onB);
    if (m == QLatin1String("rig.set_vfoA") || m == QLatin1String("rig.set_verify_vfoA")) return setFrequency(false);
    if (m == QLatin1String("rig.set_vfoB") || m == QLatin1String("rig.set_verify_vfoB")) return setFrequency(true);
    if (m == QLatin1String("rig.set_mode") || m == QLatin1String("rig.set_modeA")) return setMode();
    if (m == QLatin1String("rig.set_modeB")) {
        // The transmit mode goes with the receive mode on these radios: agreed to when it is the same.
        const int mode = modeFromName(param(0).toString().trimmed());
        if (mode != rig_.mode()) return refuse(QStringLiteral("the transmit mode follows the receive mode"));
        return 0;
    }
    if (m == QLatin1String("rig.set_bw") || m == QLatin1String("rig.set_bandwidth") ||
        m == QLatin1String("rig.set_bwA") || m == QLatin1String("rig.set_bwB")) {
        double hz = 0;
        if (!number(0, &hz) || hz <= 0 || hz > 1e6) return refuse(QStringLiteral("no bandwidth"));
        if (rig_.mode() < 0) return refuse(QStringLiteral("the radio hasn't told its mode"));
        return done(rig_.setMode(rig_.mode(), int(hz)));
    }
    if (m == QLatin1String("rig.set_ptt") || m == QLatin1String("rig.set_ptt_fast") || m == QLatin1String("rig.tune")) {
        if (!caps.ptt) return refuse(QStringLiteral("this radio can't be keyed"));
        double on = 0;
        if (!number(0, &on)) return refuse(QStringLiteral("no PTT state"));
        return done(rig_.setPtt(on != 0, client_));
    }
    if (m == QLatin1String("rig.set_split")) {
        double on = 0;
        if (!number(0, &on)) return refuse(QStringLiteral("no split state"));
        if (!caps.split) return refuse(QStringLiteral("this radio has no split"));
        return done(rig_.setSplit(on != 0));
    }
    if (m == QLatin1String("rig.set_AB")) {
        const QString vfo = param(0).toString().trimmed();
        if (vfo != QLatin1String("A") && vfo != QLatin1String("B")) return refuse(QStringLiteral("VFO A or B"));
        if (!caps.vfoAB) return refuse(QStringLiteral("this radio has no VFO switch"));
        return done(rig_.setVfo(vfo == QLatin1String("B") ? RigVfo::B : RigVfo::A));
    }
    if (m == QLatin1String("rig.cat_string")) {
        if (!rawCommands_) return refuse(QStringLiteral("raw commands are not allowed (setting NetServerRawCommands)"));
        return done(rig_.sendRaw(param(0).toString().toLatin1()));
    }
    return refuse(QStringLiteral("method not served: ") + m);
}

}  // namespace tv
