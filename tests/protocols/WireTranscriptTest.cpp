// One operator's session per radio, driven only from the outside (gestures on the windows, suite-link
// commands, bytes from the radio) on virtual time, with every byte the program writes recorded. The
// transcripts are compared with the ones checked in under tests/data/wire: a change of any byte on the
// wire, or of when it leaves, fails here. Set TOLVANE_UPDATE_WIRE=1 to write them anew after a change
// that is meant.

#include "core/RadioLink.h"
#include "platform/FakeSuiteBus.h"
#include "support/TestStation.h"

#include <QFile>

#include <gtest/gtest.h>

namespace tv::test {
namespace {

class Session {
public:
    explicit Session(const QString& radio, const QString& address = QString())
        : st(catalogueText()), radio_(radio) {
        st.preset(QStringLiteral("General"), QStringLiteral("Radio"), radio);
        st.preset(QStringLiteral("General"), QStringLiteral("CommPort"), QStringLiteral("1"));
        st.preset(QStringLiteral("General"), QStringLiteral("InterrogateInterval"), QStringLiteral("200"));
        if (!address.isEmpty()) st.preset(QStringLiteral("General"), QStringLiteral("RadioId"), address);
        st.onCreate = [this](Program& p) { bus = dynamic_cast<FakeSuiteBus*>(&p.suiteBus); };
    }
    static QString catalogueText() {
        QFile f(QStringLiteral(TOLVANE_SOURCE_DIR "/data/Radios.txt"));
        return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
    }
    void start() {
        ASSERT_TRUE(st.start());
        ASSERT_NE(st.serial(), nullptr);
        log += QStringLiteral("start %1\n").arg(radio_);
        if (!st.serial()->written.isEmpty()) log += QStringLiteral("  > %1\n").arg(hex(st.serial()->written));
        st.serial()->onWrite = [this](const QByteArray& b) {
            log += QStringLiteral("%1 > %2\n").arg(qint64(st.loop.monotonicMs()), 6).arg(hex(b));
            lastWrite = b;
        };
    }
    // Text as text (Kenwood), anything else in hexadecimal.
    static QString hex(const QByteArray& b) {
        bool printable = !b.isEmpty();
        for (char c : b) printable = printable && c >= 32 && c < 127;
        return printable ? QLatin1Char('"') + QString::fromLatin1(b) + QLatin1Char('"')
                         : QString::fromLatin1(b.toHex(' ').toUpper());
    }
    // With a radio that answers (a Yaesu, whose replies are awaited by length), every awaited reply is
    // given within ten milliseconds, as a radio at speed would.
    void advance(int ms) {
        if (!answer) {
            st.loop.advance(ms);
            return;
        }
        for (int t = 0; t < ms; t += kAnswerStep) {
            st.loop.advance(std::min(kAnswerStep, ms - t));
            RadioLink& link = st.m().link();
            if (link.replyOutstanding() && link.RcvCount == 0)
                feed(answer(link.ExpectOperation, link.ExpectedBytes, lastWrite));
        }
    }
    void feed(const QByteArray& b) {
        log += QStringLiteral("%1 < %2\n").arg(qint64(st.loop.monotonicMs()), 6).arg(hex(b));
        st.serial()->feed(b);
        st.loop.runPosted();
    }
    void click(const QString& what, const std::function<void(Program&)>& g) {
        log += QStringLiteral("%1 # %2\n").arg(qint64(st.loop.monotonicMs()), 6).arg(what);
        g(st.p());
        st.loop.runPosted();
    }
    void suite(const QString& command) {
        log += QStringLiteral("%1 # suite %2\n").arg(qint64(st.loop.monotonicMs()), 6).arg(command);
        ASSERT_NE(bus, nullptr);
        bus->send(QStringLiteral("DDEServer"), command);
        st.loop.runPosted();
    }
    void typeFrequency(const QString& text) {
        click(QStringLiteral("type ") + text, [text](Program& p) {
            p.main.FreqDisplay.setText(text);
            int key = '\r';
            p.main.FreqDisplay.keyPress(key);
        });
    }
    void stop() {
        st.stop();
        log += QStringLiteral("stop\n");
    }
    // Compares with the checked-in transcript (or writes it when asked to).
    // A difference is shown as a diff of the two transcripts.
    void check(const QString& name) {
        QFile f(QStringLiteral(TOLVANE_SOURCE_DIR "/tests/data/wire/") + name + QStringLiteral(".txt"));
        if (qEnvironmentVariableIsSet("TOLVANE_UPDATE_WIRE")) {
            ASSERT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
            f.write(log.toUtf8());
            return;
        }
        ASSERT_TRUE(f.open(QIODevice::ReadOnly)) << "no transcript " << f.fileName().toStdString();
        EXPECT_EQ(log.toStdString(), f.readAll().toStdString()) << name.toStdString();
    }

    static constexpr int kAnswerStep = 10;
    TestStation st;
    FakeSuiteBus* bus = nullptr;
    QString log;
    QByteArray lastWrite;
    // The radio's answer to an awaited reply: the operation, its length, and the block that asked.
    std::function<QByteArray(const QString&, int, const QByteArray&)> answer;

private:
    QString radio_;
};

// The gestures every radio gets, between the replies of its own language.
void operate(Session& s) {
    s.typeFrequency(QStringLiteral("14070.5"));
    s.advance(450);
    s.click(QStringLiteral("mode USB"), [](Program& p) { p.main.ModeSel[ModeUSB].setValue(true); });
    s.advance(450);
    s.click(QStringLiteral("split on"), [](Program& p) { p.main.SplitBox.setChecked(true); });
    s.advance(1250);
    s.click(QStringLiteral("split off"), [](Program& p) { p.main.SplitBox.setChecked(false); });
    s.advance(1250);
    s.click(QStringLiteral("dual on"), [](Program& p) { p.main.DualBox.setChecked(true); });
    s.advance(1250);
    s.click(QStringLiteral("VFO B"), [](Program& p) { p.main.VFOBSelCmd.click(); });
    s.advance(850);
    s.click(QStringLiteral("VFO A"), [](Program& p) { p.main.VFOASelCmd.click(); });
    s.advance(850);
    s.click(QStringLiteral("A=B"), [](Program& p) { p.main.VFOEqualCmd.click(); });
    s.advance(450);
    s.click(QStringLiteral("A<>B"), [](Program& p) { p.main.VFOXchCmd.click(); });
    s.advance(850);
    s.click(QStringLiteral("main"), [](Program& p) { p.main.MainSelCmd.click(); });
    s.click(QStringLiteral("sub"), [](Program& p) { p.main.SubSelCmd.click(); });
    s.advance(1650);
    s.click(QStringLiteral("PTT on"), [](Program& p) { p.main.PTTonCmd.click(); });
    s.advance(250);
    s.click(QStringLiteral("PTT off"), [](Program& p) { p.main.PTTOffCmd.click(); });
    s.advance(250);
    s.click(QStringLiteral("10 Hz up"), [](Program& p) { p.main.HzUpCmd.mouseDown(1, 0, 0, 0); p.main.HzUpCmd.mouseUp(1, 0, 0, 0); });
    s.advance(450);
    s.click(QStringLiteral("band up"), [](Program& p) { p.main.BandUpCmd.mouseDown(1, 0, 0, 0); p.main.BandUpCmd.mouseUp(1, 0, 0, 0); });
    s.advance(450);
    s.suite(QStringLiteral("001qsy7010.2"));
    s.advance(450);
    s.suite(QStringLiteral("001xcvrfreqmode<xcvrfreq:8>14025.50<xcvrmode:2>cw<eor>"));
    s.advance(1050);
    s.suite(QStringLiteral("001split14030"));
    s.advance(2050);
    s.suite(QStringLiteral("001transmit"));
    s.advance(250);
    s.suite(QStringLiteral("001receive"));
    s.advance(650);
}

// A frame from the radio at the address to the controller.
QByteArray civ(int from, const char* body) {
    return QByteArray::fromHex("FEFEE0") + char(from) + QByteArray::fromHex(body) + char(0xFD);
}

// Picks the list's entry where the radio's list has one there.
void pick(ComboBox& list, int index) {
    if (list.ListCount() > index) list.setListIndex(index);
}

void icomSession(const QString& radio, const QString& address, bool shortFreq) {
    Session s(radio, address);
    const int addr = address.toInt(nullptr, 16);
    s.start();
    s.advance(1050);
    // Frequency 14,025.000 kHz, mode CW (filter 1), meter, OK, NG.
    s.feed(civ(addr, shortFreq ? "0300500214" : "030050021400"));
    s.advance(250);
    s.feed(civ(addr, "040301"));
    s.feed(civ(addr, "15020128"));
    s.advance(650);
    operate(s);
    s.feed(civ(addr, "FB"));
    s.advance(250);
    s.click(QStringLiteral("filter Narrow"), [](Program& p) { SetCombo(p.main.FilterGroupCombo, QStringLiteral("Narrow")); });
    s.advance(250);
    s.feed(civ(addr, "FA"));
    s.advance(1050);
    s.suite(QStringLiteral("001xcvrcommand<WAIT>"));
    s.advance(450);
    s.stop();
    s.check(radio);
}

TEST(WireTranscript, IcomRadios) {
    icomSession(QStringLiteral("IC-756PRO"), QStringLiteral("5C"), false);
    icomSession(QStringLiteral("IC-735"), QStringLiteral("04"), true);
    icomSession(QStringLiteral("IC-775"), QStringLiteral("46"), false);
}

void tenTecSession(const QString& radio, const QString& address, const std::vector<QByteArray>& replies,
                   const QByteArray& refusal) {
    Session s(radio, address);
    s.start();
    s.advance(1050);
    for (const QByteArray& r : replies) {
        s.feed(r);
        s.advance(250);
    }
    operate(s);
    s.feed(refusal);
    s.advance(650);
    s.stop();
    s.check(radio);
}

TEST(WireTranscript, TenTecRadios) {
    // 14,025.000 kHz in CW; the Omni VI's switches are followed by a nudge at the next report.
    tenTecSession(QStringLiteral("OMNIV.9"), QStringLiteral("04"),
                  {civ(4, "030050021400"), civ(4, "040301"), civ(4, "15020128")}, civ(4, "FA"));
    tenTecSession(QStringLiteral("JUPITER"), QString(),
                  {QByteArray("A") + QByteArray::fromHex("00D60128") + '\r', "M33\r", "S0A\r", "EA\r"}, "Z\r");
    tenTecSession(QStringLiteral("ORION"), QString(),
                  {"@AF14.025\r", "@BF7010200\r", "@RMM2\r", "@SRM12S\r", "@KVAAB\r"}, "Z!XY\r");
}

QByteArray ifReply(long long hz, char mode, char vfo, char split = '0') {
    QByteArray r = "IF" + QByteArray::number(hz).rightJustified(11, '0');
    r += "     +000000000";
    r += '0';
    r += mode;
    r += vfo;
    r += '0';
    r += split;
    r += "0080;";
    return r;
}

void kenwoodSession(const QString& radio, const QByteArray& id, const QString& name) {
    Session s(radio);
    s.start();
    s.advance(450);
    s.feed(id);
    s.advance(250);
    s.feed(ifReply(14025000, '3', '0'));
    s.advance(250);
    s.feed("SM0012;");
    s.feed("SM00012;");
    s.advance(250);
    s.feed("FW0500;IS+0300;SL05;SH08;");
    s.advance(450);
    s.click(QStringLiteral("width 2nd"), [](Program& p) { pick(p.main.WidthCombo, 1); });
    s.advance(250);
    s.click(QStringLiteral("shift 2nd"), [](Program& p) { pick(p.main.ShiftCombo, 1); });
    s.advance(250);
    s.feed(ifReply(14025000, '2', '0'));
    s.advance(250);
    s.click(QStringLiteral("high cut 3rd"), [](Program& p) { pick(p.main.HighCutoffCombo, 2); });
    s.click(QStringLiteral("low cut 3rd"), [](Program& p) { pick(p.main.LowCutoffCombo, 2); });
    s.advance(450);
    operate(s);
    s.feed(ifReply(7010200, '1', '1', '1'));
    s.feed("FA00014025000;FB00007010200;FR1;MD3;?;");
    s.advance(650);
    s.stop();
    s.check(name);
}

TEST(WireTranscript, KenwoodRadios) {
    kenwoodSession(QStringLiteral("TS-2000"), "ID019;", QStringLiteral("TS-2000"));
    kenwoodSession(QStringLiteral("TS-570"), "ID018;", QStringLiteral("TS-570S"));
    kenwoodSession(QStringLiteral("TS-870"), "ID015;", QStringLiteral("TS-870S"));
    kenwoodSession(QStringLiteral("TS-450"), "ID010;", QStringLiteral("TS-450S"));
    kenwoodSession(QStringLiteral("TS-2000"), "ID004;", QStringLiteral("TS-440S"));
}

// Yaesu replies: runs of bytes (in hexadecimal) from 1-based positions, zero elsewhere, cut at the length.
QByteArray yaesuReply(int length, std::initializer_list<std::pair<int, const char*>> runs) {
    QByteArray r(length, '\0');
    for (auto [at, run] : runs) r.replace(at - 1, int(qstrlen(run)) / 2, QByteArray::fromHex(run));
    return r.left(length);
}

void yaesuSession(const QString& radio, const QString& name,
                  std::function<QByteArray(const QString&, int, const QByteArray&)> answer, bool groups = false) {
    Session s(radio);
    s.answer = std::move(answer);
    s.start();
    s.advance(1050);
    operate(s);
    if (groups) {
        // A group's three filter blocks, in order; the radio's next read says 2.4k again, and the list
        // follows it without a word to the radio.
        s.click(QStringLiteral("filter Narrow"), [](Program& p) { SetCombo(p.main.FilterGroupCombo, QStringLiteral("Narrow")); });
        s.advance(1050);
    }
    s.advance(650);
    s.stop();
    s.check(name);
}

TEST(WireTranscript, YaesuRadios) {
    // 14,025.50 kHz in CW on VFO A, meter at a third, nothing else set.
    yaesuSession(QStringLiteral("FT817"), QStringLiteral("FT-817"), [](const QString& op, int n, const QByteArray&) {
        if (op == QLatin1String("GetOpData")) return QByteArray::fromHex("0140255002");
        if (op == QLatin1String("YaesuMeter")) return QByteArray::fromHex("05");
        return QByteArray(n, '\0');  // split, PTT and lock done; the VFO flag says A
    });
    yaesuSession(QStringLiteral("MP1000"), QStringLiteral("FT-1000MP"), [](const QString& op, int n, const QByteArray&) {
        if (op == QLatin1String("GetOpData"))  // 14025.5 kHz in sixteenths of ten hertz, CW, filters 2.4k
            return yaesuReply(n, {{2, "01566B60"}, {8, "0211"}, {18, "01566B60"}, {25, "01"}});
        if (op == QLatin1String("YaesuMeter")) return QByteArray::fromHex("55555555F7");
        if (op == QLatin1String("YaesuStatus")) return yaesuReply(n, {{1, "20"}});  // on a VFO: the long read
        return QByteArray(n, '\0');
    }, true);
    // The FT-767 echoes each block and answers each acknowledge with its state, newest byte last.
    yaesuSession(QStringLiteral("FT767"), QStringLiteral("FT-767"), [](const QString& op, int n, const QByteArray& asked) {
        if (op == QLatin1String("CommandEcho")) return asked;
        QByteArray r(n, '\0');
        auto p = [&](int k, int v) {
            if (n + 1 - k >= 1) r[n - k] = char(v);
        };
        p(1, 0x00);  // status: no split, VFO A
        p(2, 0x01), p(3, 0x40), p(4, 0x25), p(5, 0x50);  // 14,025.50 kHz
        p(7, 2);  // CW
        p(15, 0x01), p(16, 0x40), p(17, 0x25), p(18, 0x50);
        p(21, 0x00), p(22, 0x70), p(23, 0x10), p(24, 0x00);
        return r;
    });
}

}  // namespace
}  // namespace tv::test
