// One operator's session per radio, driven only from the outside (gestures on the windows, suite-link
// commands, bytes from the radio) on virtual time, with every byte the program writes recorded. The
// transcripts are compared with the ones checked in under tests/data/wire: a change of any byte on the
// wire, or of when it leaves, fails here. Set TOLVANE_UPDATE_WIRE=1 to write them anew after a change
// that is meant.

#include "platform/FakeSuiteBus.h"
#include "support/TestStation.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

namespace tv::test {
namespace {

struct Step {
    enum Kind { Advance, Feed, Gesture, Suite } kind;
    int ms = 0;
    QByteArray bytes;
    std::function<void(Program&)> gesture;
    QString text;
};

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
        };
    }
    // Text as text (Kenwood), anything else in hexadecimal.
    static QString hex(const QByteArray& b) {
        bool printable = !b.isEmpty();
        for (char c : b) printable = printable && c >= 32 && c < 127;
        return printable ? QLatin1Char('"') + QString::fromLatin1(b) + QLatin1Char('"')
                         : QString::fromLatin1(b.toHex(' ').toUpper());
    }
    void advance(int ms) { st.loop.advance(ms); }
    void feed(const QByteArray& b) {
        log += QStringLiteral("%1 < %2\n").arg(qint64(st.loop.monotonicMs()), 6).arg(hex(b));
        st.serial()->feed(b);
        st.loop.runPosted();
    }
    void gesture(const QString& what, const std::function<void(Program&)>& g) {
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
        gesture(QStringLiteral("type ") + text, [text](Program& p) {
            p.main.FreqDisplay.setText(text);
            int key = '\r';
            p.main.FreqDisplay.keyPress(key);
        });
    }
    void click(const QString& what, const std::function<void(Program&)>& g) { gesture(what, g); }
    void stop() {
        st.stop();
        log += QStringLiteral("stop\n");
    }
    // Compares with the checked-in transcript (or writes it when asked to).
    void check(const QString& name) {
        const QString path = QStringLiteral(TOLVANE_SOURCE_DIR "/tests/data/wire/") + name + QStringLiteral(".txt");
        if (qEnvironmentVariableIsSet("TOLVANE_UPDATE_WIRE")) {
            QDir().mkpath(QStringLiteral(TOLVANE_SOURCE_DIR "/tests/data/wire"));
            QFile f(path);
            ASSERT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
            f.write(log.toUtf8());
            return;
        }
        QFile f(path);
        ASSERT_TRUE(f.open(QIODevice::ReadOnly)) << "no transcript " << path.toStdString();
        const QStringList want = QString::fromUtf8(f.readAll()).split(QLatin1Char('\n'));
        const QStringList got = log.split(QLatin1Char('\n'));
        for (int i = 0; i < std::min(want.size(), got.size()); ++i)
            ASSERT_EQ(got[i].toStdString(), want[i].toStdString()) << name.toStdString() << " line " << i + 1;
        ASSERT_EQ(got.size(), want.size()) << name.toStdString();
    }

    TestStation st;
    FakeSuiteBus* bus = nullptr;
    QString log;

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

QByteArray civ(std::initializer_list<int> body, int from) {
    QByteArray f = QByteArray::fromHex("FEFE");
    f.append(char(0xE0));
    f.append(char(from));
    for (int b : body) f.append(char(b));
    f.append(char(0xFD));
    return f;
}

void icomSession(const QString& radio, const QString& address, int addr, const QString& name, bool shortFreq) {
    Session s(radio, address);
    s.start();
    s.advance(1050);
    // Frequency 14,025.000 kHz, mode CW (filter 1), meter, OK, NG.
    if (shortFreq)
        s.feed(civ({0x03, 0x00, 0x50, 0x02, 0x14}, addr));
    else
        s.feed(civ({0x03, 0x00, 0x50, 0x02, 0x14, 0x00}, addr));
    s.advance(250);
    s.feed(civ({0x04, 0x03, 0x01}, addr));
    s.feed(civ({0x15, 0x02, 0x01, 0x28}, addr));
    s.advance(650);
    operate(s);
    s.feed(civ({0xFB}, addr));
    s.advance(250);
    s.click(QStringLiteral("filter Narrow"), [](Program& p) { SetCombo(p.main.FilterGroupCombo, QStringLiteral("Narrow")); });
    s.advance(250);
    s.feed(civ({0xFA}, addr));
    s.advance(1050);
    s.suite(QStringLiteral("001xcvrcommand<WAIT>"));
    s.advance(450);
    s.stop();
    s.check(name);
}

TEST(WireTranscript, IcomRadios) {
    icomSession(QStringLiteral("IC-756PRO"), QStringLiteral("5C"), 0x5C, QStringLiteral("IC-756PRO"), false);
    icomSession(QStringLiteral("IC-735"), QStringLiteral("04"), 0x04, QStringLiteral("IC-735"), true);
    icomSession(QStringLiteral("IC-775"), QStringLiteral("46"), 0x46, QStringLiteral("IC-775"), false);
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
    s.click(QStringLiteral("width 2nd"), [](Program& p) {
        if (p.main.WidthCombo.ListCount() > 1) p.main.WidthCombo.setListIndex(1);
    });
    s.advance(250);
    s.click(QStringLiteral("shift 2nd"), [](Program& p) {
        if (p.main.ShiftCombo.ListCount() > 1) p.main.ShiftCombo.setListIndex(1);
    });
    s.advance(250);
    s.feed(ifReply(14025000, '2', '0'));
    s.advance(250);
    s.click(QStringLiteral("high cut 3rd"), [](Program& p) {
        if (p.main.HighCutoffCombo.ListCount() > 2) p.main.HighCutoffCombo.setListIndex(2);
    });
    s.click(QStringLiteral("low cut 3rd"), [](Program& p) {
        if (p.main.LowCutoffCombo.ListCount() > 2) p.main.LowCutoffCombo.setListIndex(2);
    });
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

}  // namespace
}  // namespace tv::test
