// The Yaesu family byte for byte, on the core alone in virtual time: the command blocks of each model
// group, the replies read, the queue held while a reply is on its way, and the FT-767's handshake.

#include "coresupport/CoreRig.h"
#include "protocols/yaesu/Yaesu.h"
#include "support/QtPrinters.h"

#include <QFile>
#include <QSet>

#include <gtest/gtest.h>

#include <functional>
#include <random>

namespace tv::test {
namespace {

QByteArray hx(const char* text) {
    return QByteArray::fromHex(text);
}

QString catalogue() {
    QFile f(QStringLiteral(TOLVANE_SOURCE_DIR "/data/Radios.txt"));
    return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
}

// A reply of the given length, zero but for runs of bytes (in hexadecimal) from 1-based positions.
QByteArray reply(int length, std::initializer_list<std::pair<int, const char*>> runs) {
    QByteArray r(length, '\0');
    for (auto [at, run] : runs) r.replace(at - 1, int(qstrlen(run)) / 2, QByteArray::fromHex(run));
    return r;
}

// The FT-767's block as it arrives, newest byte last: P(k) stands at position length + 1 - k.
QByteArray block767(int length, int status, const char* freqDigits, int mode = 0, const char* a = "00000000",
                    const char* b = "00000000") {
    QByteArray r(length, '\0');
    auto put = [&](int k, int v) {
        if (length + 1 - k >= 1) r[length - k] = char(v);
    };
    auto digits = [&](int from, const char* d) {
        const QByteArray packed = QByteArray::fromHex(d);
        for (int i = 0; i < 4; ++i) put(from + i, std::uint8_t(packed[i]));
    };
    put(1, status);
    digits(2, freqDigits);
    put(7, mode);
    digits(15, a);
    digits(21, b);
    return r;
}

TEST(YaesuBlocks, FrequencyAndModeBytesOfEachCommandSet) {
    EXPECT_EQ(YaesuModelCount(), 16);
    // (The classic and modern frequency blocks leave the queue in QueueCommandsLeaveByteExactForEachGroup.)
    EXPECT_EQ(YaesuFrequencyBlock(YaesuCommandSet::Handshake, 7010.25), hx("2510700008"));
    // Tens of hertz are rounded, not cut: 0.1 kHz steps don't drift in binary.
    EXPECT_EQ(YaesuFrequencyBlock(YaesuCommandSet::Modern, 144390.07), hx("1443900701"));
    EXPECT_EQ(YaesuModeBlock(YaesuCommandSet::Modern, 0x0A), hx("0A00000007"));
    EXPECT_EQ(YaesuModeBlock(YaesuCommandSet::Handshake, 18), hx("000000120A"));

    // RTTY-R goes out as USB on the FT-900 and its smaller sisters; unlisted modes are byte 0.
    EXPECT_EQ(YaesuModeByte(YaesuSeries::FT900, ModeRTTYR), 1);
    EXPECT_EQ(YaesuModeByte(YaesuSeries::FT767, ModeWBFM), 0);
    EXPECT_EQ(YaesuModeByte(YaesuSeries::MP, ModeUnknown), 0);
    // The CW pair is the other way round on the FT-1000D than on the MP.
    EXPECT_EQ(YaesuModeByte(YaesuSeries::FT1000D, ModeCW), 3);
    EXPECT_EQ(YaesuModeByte(YaesuSeries::MP, ModeCW), 2);
}

TEST(YaesuReplies, FrequencyModeAndClarifierOfEachSeries) {
    // FT-847: the high bit of the mode byte is the narrow filter.
    auto ft847 = [](const char* mode) {
        return DecodeYaesuOpData(YaesuSeries::FT847, reply(5, {{1, "014250"}, {5, mode}}), 0);
    };
    EXPECT_DOUBLE_EQ(ft847("84").kHz, 14250.0);
    EXPECT_EQ(ft847("84").mode, ModeAM);
    EXPECT_EQ(ft847("88").mode, ModeFM);
    EXPECT_EQ(ft847("05").mode, ModeUnknown);

    // FT-1000D: a clarifier of FF FF is -1 (ten hertz), added when its bit is set.
    const QByteArray d = reply(32, {{2, "022C1A02FFFF0501"}});
    const YaesuOpData ft1000 = DecodeYaesuOpData(YaesuSeries::FT1000D, d, 0);
    EXPECT_NEAR(ft1000.kHz, 1423.61, 1e-9);  // 0x022C1A tens of hertz, less ten hertz
    EXPECT_EQ(ft1000.mode, ModeRTTYR);
    // Exactly 32768 stays positive.
    const QByteArray d2 = reply(32, {{5, "028000"}});
    EXPECT_DOUBLE_EQ(DecodeYaesuOpData(YaesuSeries::FT1000D, d2, 0).kHz, 327.68);

    // FT-100: 11,400,000 counts of 1.25 Hz are 14,250 kHz.
    const YaesuOpData ft100 = DecodeYaesuOpData(YaesuSeries::FT100, reply(16, {{2, "00ADF34013"}}), 0);
    EXPECT_DOUBLE_EQ(ft100.kHz, 14250.0);
    EXPECT_EQ(ft100.mode, ModeCWR);

    // FT-900: the clarifier's offset is shown even with the clarifier off; the other VFO comes along.
    const YaesuOpData ft900 =
        DecodeYaesuOpData(YaesuSeries::FT900, reply(19, {{3, "022C1A000C82"}, {12, "00AB22"}}), 0);
    EXPECT_NEAR(ft900.kHz, 1423.74, 1e-9);
    EXPECT_DOUBLE_EQ(*ft900.other, 438.10);
    EXPECT_EQ(ft900.mode, ModeCW);  // the narrow CW of the radio

    // MP: sixteenths of ten hertz; the flag above 128 makes CW reverse; VFO B only in the long read.
    QByteArray mp = reply(32, {{2, "0022C920"}, {8, "8298"}, {19, "111C00"}, {25, "23"}});
    const YaesuOpData mpLong = DecodeYaesuOpData(YaesuSeries::MP, mp, 0);
    EXPECT_DOUBLE_EQ(mpLong.kHz, 2279712 / 1600.0);
    EXPECT_EQ(mpLong.mode, ModeCWR);
    EXPECT_DOUBLE_EQ(*mpLong.vfoB, 0x111C00 / 1600.0);
    EXPECT_EQ(mpLong.filterByte, 0x18);
    EXPECT_EQ(mpLong.subFilterByte, 0x23);
    EXPECT_FALSE(DecodeYaesuOpData(YaesuSeries::MP, mp.left(16), 1).vfoB);

    // FT-757: BCD least significant first; FT-747: thousandths, VFO B read one byte into its mode byte.
    const YaesuOpData ft757 = DecodeYaesuOpData(YaesuSeries::FT757, reply(75, {{6, "0050420103002570"}}), 0);
    EXPECT_DOUBLE_EQ(ft757.kHz, 14250.0);
    EXPECT_DOUBLE_EQ(*ft757.vfoA, 7025.0);
    EXPECT_EQ(ft757.mode, ModeCW);
    const YaesuOpData ft747 =
        DecodeYaesuOpData(YaesuSeries::FT747, reply(345, {{3, "1425000040"}, {17, "0701000020"}}), 0);
    EXPECT_DOUBLE_EQ(ft747.kHz, 14250.0);
    EXPECT_EQ(ft747.mode, ModeCW);
    EXPECT_DOUBLE_EQ(*ft747.vfoB, 701000020 / 1000.0);
    EXPECT_TRUE(ft747.clearsSplit);
}

TEST(YaesuReplies, FlagsMeterAndTheFilterStep) {
    const YaesuFlags mp = DecodeYaesuFlags(YaesuFlagsForm::MP, reply(6, {{1, "53"}}));
    EXPECT_TRUE(mp.split);
    EXPECT_TRUE(*mp.dual);
    EXPECT_EQ(mp.vfo, 1);
    EXPECT_EQ(*mp.readSelector, 2);  // bit 4 wins over bits 5 and 6
    EXPECT_EQ(*DecodeYaesuFlags(YaesuFlagsForm::MP, reply(6, {{1, "60"}})).readSelector, 0);
    EXPECT_EQ(*DecodeYaesuFlags(YaesuFlagsForm::MP, reply(6, {{1, "40"}})).readSelector, 1);
    EXPECT_FALSE(DecodeYaesuFlags(YaesuFlagsForm::MP, reply(6, {{1, "00"}})).readSelector);

    EXPECT_DOUBLE_EQ(DecodeYaesuMeter(YaesuMeterForm::Low4Of15, hx("F5")), double(5.0f / 15.0f));
    EXPECT_DOUBLE_EQ(DecodeYaesuMeter(YaesuMeterForm::FT100, reply(9, {{4, "54"}})), 1.0);
    EXPECT_LT(DecodeYaesuMeter(YaesuMeterForm::FT100, reply(9, {{4, "FF"}})), 0.0);

    // 0x18 / 16 is 1.5: to the even 2, leaving -8, which no list has.
    EXPECT_EQ(SplitYaesuFilterByte(0x18).q, 2);
    EXPECT_EQ(SplitYaesuFilterByte(0x18).r, -8);
    EXPECT_EQ(SplitYaesuFilterByte(0x28).q, 2);  // 2.5 to even 2
    EXPECT_EQ(SplitYaesuFilterByte(0x28).r, 8);
    EXPECT_EQ(SplitYaesuFilterByte(0x38).q, 4);  // 3.5 to even 4
    for (int b = 0; b < 256; ++b) {
        const YaesuFilterCodes c = SplitYaesuFilterByte(b);
        EXPECT_EQ(c.q * 16 + c.r, b);
        EXPECT_LE(std::abs(c.r), 8);
    }
}

class Yaesu : public ::testing::Test {
  protected:
    void start(const char* model, bool polling = false) {
        rig.view.interrogation = polling;
        rig.withRadio(QString::fromLatin1(model));
        QObject::connect(&rig.state, &RadioState::splitReported, &rig.state, [this](bool on) { split = on; });
        QObject::connect(&rig.state, &RadioState::dualReported, &rig.state, [this](bool on) { dual = on; });
        QObject::connect(&rig.state, &RadioState::meterReported, &rig.state, [this](double v) { meter = v; });
        QObject::connect(&rig.state, &RadioState::controlReleased, &rig.state, [this] { ++released; });
        QObject::connect(&rig.state, &RadioState::filterStatusReported, &rig.state, [this](const FilterStatus& f) {
            if (f.modeChanged) codes << QStringLiteral("new mode");
            for (int l = 0; l < 3 && !f.modeChanged; ++l) codes << QStringLiteral("%1:%2").arg(l).arg(f.codes[size_t(l)]);
        });
    }
    YaesuProtocol& y() { return *dynamic_cast<YaesuProtocol*>(rig.radio.protocol()); }
    // What the queue sends on the ticks until it has nothing left or holds for a reply.
    QByteArray drain() {
        QByteArray out;
        for (int i = 0; i < 20 && rig.queue.count() > 0; ++i) out += rig.tick();
        return out;
    }
    CoreRig rig{catalogue()};
    std::optional<bool> split, dual;
    double meter = -1;
    int released = 0;
    QStringList codes;
};

TEST_F(Yaesu, QueueCommandsLeaveByteExactForEachGroup) {
    struct Case {
        const char* model;
        std::function<void(CommandQueue&)> op;
        const char* bytes;
    };
    const Case cases[] = {
        {"FT1000D", [](CommandQueue& q) { q.SetXcvrFreq(14250); }, "005042010A"},
        {"FT817", [](CommandQueue& q) { q.SetXcvrFreq(14250); }, "0142500001"},
        // "Select VFO A" means nothing to radios whose main receiver always works VFO A.
        {"FT1000D", [](CommandQueue& q) { q.SetXcvrVFOA(); }, ""},
        {"MP1000", [](CommandQueue& q) { q.SetXcvrVFOA(); }, ""},
        {"FT920", [](CommandQueue& q) { q.SetXcvrVFOA(); }, ""},
        {"FT847", [](CommandQueue& q) { q.SetXcvrVFOA(); }, ""},
        {"FT990", [](CommandQueue& q) { q.SetXcvrVFOB(); }, "0000000105"},
        {"FT900", [](CommandQueue& q) { q.SetXcvrMode(ModeRTTYR); }, "000000010C"},
        {"FT847", [](CommandQueue& q) { q.SetXcvrMode(ModeAM); }, "0400000007"},
        {"FT990", [](CommandQueue& q) { q.SetXcvrVFOXch(); }, ""},
        {"MP1000MKV", [](CommandQueue& q) { q.SetXcvrVFOXch(); }, "0000000105"},
        {"FT817", [](CommandQueue& q) { q.SetXcvrVFOXch(); }, "0000000081"},
        {"FT1000D", [](CommandQueue& q) { q.SetXcvrDual(true); }, "0000000183"},
        {"FT757", [](CommandQueue& q) { q.SetXcvrSplit(true); }, "0000000101"},
        {"FT847", [](CommandQueue& q) { q.SetXcvrSplit(true); }, ""},
        {"FT1000D", [](CommandQueue& q) { q.StepXcvrFreq(false); }, "000000018E"},
        {"MP1000", [](CommandQueue& q) { q.SetXcvrFilters(3, FilterSecondIF); }, "020000038C"},
        {"FT100", [](CommandQueue& q) { q.SetXcvrTransmit(); }, "000000010F"},
        {"FT847", [](CommandQueue& q) { q.SetXcvrTransmit(); }, "0000000008"},
        {"FT847", [](CommandQueue& q) { q.EnqueueXcvrCmd(XcvrCmdPower, 0, 0, 1); }, "0000000000"},
        // Deliberately nothing: the FT-847's VFO B frequency has never been sent.
        {"FT847", [](CommandQueue& q) { q.SetXcvrSBFreq(7000); }, ""},
        {"FT990", [](CommandQueue& q) { q.SetXcvrSBFreq(7000); }, "0000000105000000040C000070000A0000000005"},
        {"FT920", [](CommandQueue& q) { q.SetXcvrSBFreq(7000); }, "0000000105000000040C000070000A0000000105"},
    };
    for (const Case& c : cases) {
        CoreRig fresh{catalogue()};
        fresh.view.interrogation = false;
        fresh.withRadio(QString::fromLatin1(c.model));
        // The FT-990 is asked at once whether it is there; the queue waits for its answer.
        if (fresh.link.replyOutstanding()) fresh.wire(QByteArray(fresh.link.ExpectedBytes, '\0'));
        fresh.state.RadioMode = ModeAM;
        c.op(fresh.queue);
        QByteArray out;
        for (int i = 0; i < 10; ++i) out += fresh.tick();
        EXPECT_EQ(out.toHex().toUpper(), QByteArray(c.bytes)) << c.model;
    }
}

TEST_F(Yaesu, SmallRadiosWaitForTheirAnswerAndToggleToTheVfoAskedFor) {
    start("FT817");
    rig.queue.SetXcvrSplit(true);
    rig.queue.SetXcvrFreq(7010);
    // The split answer is awaited: the frequency stays queued behind it, tick after tick.
    EXPECT_EQ(rig.tick(), hx("0000000002"));
    EXPECT_EQ(rig.tick(), QByteArray());
    EXPECT_EQ(rig.link.ExpectOperation, QStringLiteral("SplitStatus"));
    rig.wire(hx("00"));
    EXPECT_EQ(rig.link.ExpectOperation, QString());
    EXPECT_EQ(rig.tick(), hx("0070100001"));

    // VFO A asked while the radio is on B (bit 0 of the flag byte): a toggle and a fresh read follow.
    rig.queue.SetXcvrVFOA();
    EXPECT_EQ(rig.tick(), hx("00550000BB"));
    rig.wire(hx("0100"));
    EXPECT_EQ(rig.queued(), (QStringList{"Wait", "Exchange VFOs", "Wait", "Wait", "Request Frequency", "Wait",
                                         "Request Mode"}));
    EXPECT_EQ(drain(), hx("0000000081") + hx("0000000003"));
    // Already on A: nothing more.
    rig.queue.InitializeXcvrCmdBuffer();
    rig.link.Reset();
    rig.queue.SetXcvrVFOA();
    rig.tick();
    rig.wire(hx("0000"));
    EXPECT_EQ(rig.queue.count(), 0);
}

TEST_F(Yaesu, MpPollingCyclesMeterFrequencyAndFlagsAndReadsShorterWhenTheFlagsSaySo) {
    start("MP1000", true);
    rig.state.RadioFreq = 0;
    EXPECT_EQ(rig.tick(), hx("00000000F7"));
    rig.wire(hx("80808080F7"));
    EXPECT_DOUBLE_EQ(meter, double(128.0f / 255.0f));
    EXPECT_EQ(rig.tick(), hx("0000000310"));
    // A tick while the 32 bytes are still coming sends nothing into them.
    QByteArray mp = reply(32, {{3, "22C920"}, {8, "0123"}, {20, "1C"}, {25, "12"}});
    rig.wire(mp.left(20));
    EXPECT_EQ(rig.tick(), QByteArray());
    rig.wire(mp.mid(20));
    EXPECT_DOUBLE_EQ(rig.state.RadioFreq, 2279712 / 1600.0);
    EXPECT_DOUBLE_EQ(rig.state.VFOAFreq, 2279712 / 1600.0);
    EXPECT_DOUBLE_EQ(rig.state.VFOBFreq, 0x1C00 / 1600.0);
    EXPECT_EQ(rig.state.RadioMode, ModeUSB);
    EXPECT_EQ(codes, QStringList{"new mode"});  // its group decides, not the lists
    codes.clear();
    EXPECT_EQ(rig.tick(), hx("00000000F7"));
    rig.wire(hx("00000000F7"));
    EXPECT_EQ(rig.tick(), hx("0000000310"));
    rig.wire(mp);
    EXPECT_EQ(codes, (QStringList{"0:2", "1:3", "2:2"}));
    // Phase 4: the flags. Split, dual watch and VFO B; bit 6 alone asks for the short read.
    EXPECT_EQ(rig.tick(), hx("00000001FA"));
    rig.wire(reply(6, {{1, "43"}}));
    EXPECT_EQ(split, true);
    EXPECT_EQ(dual, true);
    EXPECT_EQ(y().readSelector(), 1);
    rig.tick();  // meter
    rig.wire(hx("00000000F7"));
    EXPECT_EQ(rig.tick(), hx("0000000210"));
    EXPECT_EQ(rig.link.ExpectedBytes, 16);
}

TEST_F(Yaesu, ALostReplyEndsAfterFiveSecondsAndTheNextPollGoesOut) {
    start("FT1000D", true);
    EXPECT_EQ(rig.tick(), hx("00000000F7"));
    // No answer: the wait holds polling until it times out, then the radio counts as silent.
    rig.loop.advance(4900);
    EXPECT_EQ(rig.sent(), QByteArray());
    EXPECT_TRUE(rig.state.Responding);
    rig.loop.advance(100);
    EXPECT_FALSE(rig.state.Responding);
    rig.loop.advance(200);
    EXPECT_EQ(rig.sent(), hx("0000000310"));
    // The FT-1000D's mode rides on its frequency read: phase 3 sends nothing.
    rig.wire(reply(32, {{2, "022C1A"}, {8, "02"}}));
    EXPECT_TRUE(rig.state.Responding);
    EXPECT_DOUBLE_EQ(rig.state.RadioFreq, 1423.62);
    EXPECT_EQ(rig.state.RadioMode, ModeCW);
    rig.tick();
    rig.wire(hx("00000000F7"));
    EXPECT_EQ(rig.tick(), QByteArray());
    EXPECT_EQ(rig.queue.interrogationPhase(), 0);
}

// A radio that stops answering for good. What it was last asked stays awaited, so the records queued
// behind it wait for the radio; but polling goes on (that is how the radio is found again), an unkey
// doesn't wait for the radio, and once it answers the queue goes on.
TEST_F(Yaesu, ASilentRadioIsPolledOnAndAnUnkeyLeavesWhenTheWaitEndsWhileTheRestWaitsForAnAnswer) {
    start("MP1000", true);
    rig.queue.InterrogateRadio();  // as at start-up
    rig.loop.advance(2000);
    rig.queue.SetXcvrFreq(14025.5);
    rig.state.SetTransmitting(true);
    rig.queue.SetXcvrTransmit();
    rig.sent();
    rig.loop.advance(30000);
    const QByteArray silent = rig.sent();
    const QSet<QByteArray> polls{hx("00000000F7"), hx("0000000310"), hx("0000000210"), hx("00000001FA")};
    EXPECT_GE(silent.size() / 5, 5) << silent.toHex().toStdString();
    for (int i = 0; i + 5 <= silent.size(); i += 5) EXPECT_TRUE(polls.contains(silent.mid(i, 5))) << i;

    // Unkeyed just after a poll went out: the unkey waits for that poll's answer, at most its wait.
    for (int ms = 0; ms < 6000 && rig.sent().isEmpty(); ++ms) rig.loop.advance(1);
    rig.queue.SetXcvrReceive();
    rig.loop.advance(4900);
    EXPECT_TRUE(rig.state.transmitting());
    rig.loop.advance(200);
    const QByteArray unkeyed = rig.sent();
    EXPECT_TRUE(unkeyed.startsWith(hx("000000000F"))) << unkeyed.toHex().toStdString();
    EXPECT_FALSE(unkeyed.contains(hx("000000010F")));  // the key that never left never will
    EXPECT_FALSE(rig.state.transmitting());

    // The radio answers a poll: the tuning waiting since the second second goes out.
    ASSERT_TRUE(rig.link.replyOutstanding());
    rig.wire(QByteArray(rig.link.ExpectedBytes, '\0'));
    EXPECT_TRUE(rig.state.Responding);
    rig.loop.advance(250);
    EXPECT_TRUE(rig.sent().contains(hx("502540010A")));
    EXPECT_EQ(rig.queue.count(), 0);
}

// The small radios are polled slowly once silent: every five seconds, each poll's wait running out
// just as the next poll is due, and back at the configured pace at the first answer.
TEST_F(Yaesu, ASilentSmallRadioIsTriedEveryFiveSecondsUntilItAnswers) {
    start("FT817", true);
    std::vector<std::int64_t> polls;
    for (std::int64_t ms = 1; ms <= 40000; ++ms) {
        rig.loop.advance(1);
        if (!rig.sent().isEmpty()) polls.push_back(ms);
    }
    ASSERT_GE(polls.size(), 7u);
    EXPECT_FALSE(rig.state.Responding);
    for (size_t i = 2; i < polls.size(); ++i) {
        EXPECT_GE(polls[i] - polls[i - 1], 5000) << i;
        EXPECT_LE(polls[i] - polls[i - 1], 5002) << i;
    }
    rig.wire(QByteArray(rig.link.ExpectedBytes, '\0'));
    rig.loop.advance(5002);
    EXPECT_EQ(rig.queue.XcvrCmdTimer.Interval(), 200);
}

TEST_F(Yaesu, BringUpSendsWhatEachModelNeedsFirst) {
    start("FT847");
    y().BringUp();
    EXPECT_EQ(rig.sent(), hx("0000000000"));
    CoreRig ft990{catalogue()};
    ft990.withRadio(QStringLiteral("FT990"));
    ft990.radio.protocol()->BringUp();
    EXPECT_EQ(ft990.sent(), hx("0000000110"));
    EXPECT_EQ(ft990.link.ExpectOperation, QStringLiteral("GetFT990Startup"));
    EXPECT_EQ(ft990.link.ExpectedBytes, 1);
    EXPECT_EQ(ft990.radio.protocol()->FineStepToolTip(true), QString());
    CoreRig ft1000{catalogue()};
    ft1000.withRadio(QStringLiteral("FT1000D"));
    EXPECT_EQ(ft1000.radio.protocol()->FineStepToolTip(false),
              QStringLiteral("QSY down minimum step (10 or 100 Hz)"));
    EXPECT_TRUE(ft1000.radio.protocol()->traits().stepsWithOwnCommand);
}

class Ft767 : public Yaesu {
  protected:
    void SetUp() override { start("FT767"); }
    // Time passes while a reply is awaited, and nothing is written into it.
    void idle() {
        rig.loop.advance(450);
        EXPECT_EQ(rig.sent(), QByteArray());
    }
    // Answers the handshake's steps: the echo of each block, the state after each acknowledge.
    void runHandshake(const QByteArray& command, const QByteArray& commandReply, const QByteArray& last) {
        EXPECT_EQ(rig.sent(), hx("0000000000"));
        EXPECT_EQ(y().handshake(), YaesuProtocol::Handshake::CatOn);
        idle();
        rig.wire(hx("0000000000"));
        EXPECT_EQ(rig.sent(), hx("000000000B"));
        idle();
        rig.wire(block767(86, 0, "00701000"));
        EXPECT_EQ(rig.sent(), command);
        idle();
        rig.wire(command);
        EXPECT_EQ(rig.sent(), hx("000000000B"));
        idle();
        rig.wire(commandReply);
        EXPECT_EQ(rig.sent(), hx("0000000100"));
        EXPECT_EQ(y().handshake(), YaesuProtocol::Handshake::CatOff);
        idle();
        rig.wire(hx("0000000100"));
        EXPECT_EQ(rig.sent(), hx("000000000B"));
        idle();
        rig.wire(last);
        EXPECT_EQ(y().handshake(), YaesuProtocol::Handshake::Idle);
        EXPECT_EQ(rig.sent(), QByteArray());
    }
};

TEST_F(Ft767, EveryCommandAndPollRunsTheHandshakeToItsEnd) {
    rig.view.interrogation = true;
    rig.queue.SetXcvrFreq(14250);
    rig.queue.SetXcvrMode(ModeCW);
    rig.loop.advance(rig.queue.XcvrCmdTimer.Interval());
    // The mode waits behind the whole handshake of the frequency, and no poll cuts in.
    runHandshake(hx("0050420108"), block767(5, 0, "01425000"),
                 block767(86, 0x08, "01425000", 0, "01425000", "00702000"));
    EXPECT_EQ(released, 1);
    EXPECT_EQ(split, true);
    EXPECT_DOUBLE_EQ(rig.state.RadioFreq, 14250.0);
    EXPECT_DOUBLE_EQ(rig.state.VFOBFreq, 7020.0);
    EXPECT_EQ(rig.state.RadioMode, ModeLSB);
    rig.loop.advance(rig.queue.XcvrCmdTimer.Interval());
    runHandshake(hx("000000120A"), block767(8, 0, "01425000", 2), block767(86, 0, "01425000", 3));
    EXPECT_EQ(released, 2);
    EXPECT_EQ(rig.state.RadioMode, ModeAM);
    // With nothing queued the tick polls: the same handshake around no command.
    rig.loop.advance(rig.queue.XcvrCmdTimer.Interval());
    EXPECT_EQ(rig.sent(), hx("0000000000"));
    EXPECT_EQ(y().handshake(), YaesuProtocol::Handshake::Poll);
    rig.wire(hx("0000000000"));
    EXPECT_EQ(rig.sent(), hx("000000000B"));
    rig.wire(block767(86, 0x10, "00705000"));
    EXPECT_EQ(rig.sent(), hx("0000000100"));
    EXPECT_DOUBLE_EQ(rig.state.RadioFreq, 7050.0);
    EXPECT_EQ(rig.state.CurrentVFO, 1);
}

TEST_F(Ft767, SplitTogglesOnlyWhenTheRadioDiffersAndALostReplyStartsOver) {
    // The last status said split off: split off sends nothing, split on toggles.
    rig.queue.SetXcvrSplit(false);
    EXPECT_EQ(rig.tick(), QByteArray());
    rig.queue.SetXcvrSplit(true);
    rig.loop.advance(rig.queue.XcvrCmdTimer.Interval());
    runHandshake(hx("000000300A"), block767(26, 0x08, "01425000"), block767(86, 0x08, "01425000"));
    // The radio now says split on: asking for split again sends nothing.
    rig.queue.SetXcvrSplit(true);
    EXPECT_EQ(rig.tick(), QByteArray());

    // A reply that never comes: after the wait the handshake starts over from the top.
    rig.queue.SetXcvrVFOB();
    EXPECT_EQ(rig.tick(), hx("0000000000"));
    rig.wire(hx("0000000000"));
    EXPECT_EQ(rig.sent(), hx("000000000B"));
    rig.wire(block767(86, 0, "00701000").left(40));
    rig.loop.advance(5000);
    EXPECT_FALSE(rig.state.Responding);
    EXPECT_EQ(rig.sent(), QByteArray());
    rig.view.interrogation = true;
    EXPECT_EQ(rig.tick(), hx("0000000000"));
    EXPECT_EQ(y().handshake(), YaesuProtocol::Handshake::Poll);
}

}  // namespace
}  // namespace tv::test
