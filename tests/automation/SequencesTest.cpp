// User command sequences: the little language, the toggle idiom, the banks and keys, the editor, and
// sequences running side by side on the one queue.

#include "support/TestStation.h"

#include <gtest/gtest.h>

namespace tv::test {
namespace {

const QString G = QStringLiteral("General");
const QString S = QStringLiteral("CommandSequences");

class Sequences : public ::testing::Test {
protected:
    void SetUp() override {
        st.preset(G, QStringLiteral("Radio"), QStringLiteral("TS-2000"));
        st.preset(G, QStringLiteral("CommPort"), QStringLiteral("1"));
        st.preset(G, QStringLiteral("Interrogate"), QStringLiteral("F"));
        st.preset(S, QStringLiteral("SequenceName_0"), QStringLiteral("ON"));
        st.preset(S, QStringLiteral("SequenceName_9"), QStringLiteral("Alt two"));
        ASSERT_TRUE(st.start());
        m().queue().InitializeXcvrCmdBuffer();
    }
    KavModule& m() { return st.m(); }
    UserSequences& seq() { return st.p().sequences; }
    void define(int n, std::initializer_list<const char*> steps) {
        int i = 0;
        for (auto& v : seq().CommandValues[size_t(n)]) v.clear();
        for (const char* s : steps) seq().CommandValues[size_t(n)][size_t(i++)] = QString::fromLatin1(s);
    }
    // The raw and string payloads queued, in order, with "W" for a wait.
    QStringList queued() {
        QStringList out;
        for (const XcvrCmd& c : m().queue().queued()) out << (c.theCmd == XcvrCmdWait ? QStringLiteral("W") : c.theRawCmd);
        return out;
    }
    TestStation st;
};

TEST_F(Sequences, TheToggleFlipsItsButtonOnEachRun) {
    define(0, {"<IFNAME OFF,5>", "'PA1;", "<NAME OFF>", "<END>", "'PA0;", "<NAME ON>"});
    EXPECT_EQ(st.p().main.UserSequence[0].caption(), QStringLiteral("ON"));
    seq().ExecuteSequence(0);
    EXPECT_EQ(queued(), QStringList{QStringLiteral("PA1;")});
    EXPECT_EQ(st.p().main.UserSequence[0].caption(), QStringLiteral("OFF"));
    st.loop.runPosted();
    EXPECT_EQ(st.stored(S, QStringLiteral("SequenceName_0")), QStringLiteral("OFF"));
    seq().ExecuteSequence(0);
    EXPECT_EQ(queued(), (QStringList{QStringLiteral("PA1;"), QStringLiteral("PA0;")}));
    EXPECT_EQ(st.p().main.UserSequence[0].caption(), QStringLiteral("ON"));
}

TEST_F(Sequences, StatementsMatchInAnyCaseAndKeepTheirArgumentsCase) {
    define(2, {"", "<goto 4>", "'skipped", "abc", "<WaIt>", "<NAME  Foo Bar >", "<TOOLTIP  does it >", "<ifname foo bar,10>",
               "'skipped too", "'", "fe"});
    seq().ExecuteSequence(2);
    EXPECT_EQ(queued(), (QStringList{QStringLiteral("ABC"), QStringLiteral("W"), QStringLiteral("FE")}));
    EXPECT_EQ(seq().SequenceNames[2], QStringLiteral("Foo Bar"));
    EXPECT_EQ(seq().SequenceFunctions[2], QStringLiteral("does it"));
    EXPECT_EQ(st.p().main.UserSequence[2].toolTip(), QStringLiteral("does it"));
}

TEST_F(Sequences, BadStatementsStopTheSequenceAndBadHexFailsOnlyWhenItLeaves) {
    define(4, {"'first", "<IFNAME nocomma>", "'never"});
    seq().ExecuteSequence(4);
    EXPECT_EQ(queued(), QStringList{QStringLiteral("first")});
    ASSERT_FALSE(st.dialogs.shown.empty());
    EXPECT_EQ(st.dialogs.shown.back().text, QStringLiteral("Invalid command: <IFNAME nocomma>"));
    EXPECT_EQ(st.dialogs.shown.back().title, QStringLiteral("Tolvane: Sequence Aborted"));
    define(5, {"<GOTO x>", "'never"});
    seq().ExecuteSequence(5);
    EXPECT_TRUE(st.log().contains(QStringLiteral("in module KavModule.ExecuteSequence")));
    define(6, {"<GOTO 0>"});
    seq().ExecuteSequence(6);  // step -1: a subscript failure, reported
    EXPECT_TRUE(st.log().contains(QStringLiteral("Subscript out of range")));
    m().queue().InitializeXcvrCmdBuffer();
    define(7, {"GZ"});
    seq().ExecuteSequence(7);
    EXPECT_EQ(queued(), QStringList{QStringLiteral("GZ")});  // queued as it is
    st.loop.advance(200);
    EXPECT_TRUE(st.log().contains(QStringLiteral("in module KavModule.ExecuteNextXcvrCmd")));
}

TEST_F(Sequences, ALoopingSequenceKeepsTheProgramRunningAndCanBeStoppedByRenaming) {
    define(1, {"<IFNAME STOP,3>", "<GOTO 1>", "<END>"});
    int turns = 0;
    std::function<void()> watcher = [&] {
        if (++turns == 50)
            seq().SequenceNames[1] = QStringLiteral("stop");  // what another event could do
        else
            st.loop.post(watcher);
    };
    st.loop.post(watcher);
    seq().ExecuteSequence(1);
    EXPECT_EQ(turns, 50);
}

TEST_F(Sequences, ALoopRestsBetweenRoundsUntilAnEventComesAndEndsWithTheProgram) {
    define(1, {"'PS;", "<GOTO 1>"});
    // Rounds are counted from the debug log. A loop that doesn't rest goes round with no time passing:
    // the net ends it through the sequence's own failure path, so that the test fails, not hangs.
    st.p().common.SetDebug(true);
    int rounds = 0;
    st.p().common.echo = [&](const QString& line) {
        if (line.endsWith(QLatin1String("command: 'PS;")) && ++rounds == 1000) throw std::runtime_error("spinning");
    };
    auto closer = st.loop.createTimer();
    closer->setInterval(1000);
    closer->onTick = [&] {
        closer->setEnabled(false);
        st.p().FormUnload();  // as a signal or the suite link's "shutdown" would, while the loop runs
    };
    closer->setEnabled(true);
    const std::int64_t start = st.loop.monotonicMs();
    seq().ExecuteSequence(1);
    EXPECT_EQ(st.loop.monotonicMs() - start, 1000);
    // One round per tick of the program's own timers (the queue's at 200 ms, the clock's each second).
    EXPECT_GE(rounds, 5);
    EXPECT_LE(rounds, 8);
    EXPECT_FALSE(st.log().contains(QStringLiteral("ExecuteSequence")));
    seq().ExecuteSequence(1);  // nothing starts once the program is going down
    EXPECT_LE(rounds, 8);
}

TEST_F(Sequences, ASequenceFromAKeyInterleavesWithOneAlreadyRunning) {
    define(0, {"'A1", "'A2", "'A3"});
    define(1, {"'B1", "'B2"});
    bool started = false;
    st.loop.post([&] {
        if (started) return;
        started = true;
        int f6 = kKeyF5 + 1;
        st.p().main.FreqDisplay.keyDown(f6, 0);
    });
    m().hooks.ActivateSequence(0);
    EXPECT_EQ(queued(), (QStringList{QStringLiteral("A1"), QStringLiteral("B1"), QStringLiteral("B2"),
                                     QStringLiteral("A2"), QStringLiteral("A3")}));
}

TEST_F(Sequences, BanksKeysAndTheEditor) {
    st.p().main.AltCheckBox.setChecked(true);
    EXPECT_EQ(st.p().main.UserSequence[1].caption(), QStringLiteral("Alt two"));
    EXPECT_EQ(st.p().main.RawCmdLabel[0].caption(), QStringLiteral("ALT F5"));
    // A name changed on a sequence of the other bank shows on no button.
    define(0, {"<NAME Changed>"});
    seq().ExecuteSequence(0);
    EXPECT_EQ(st.p().main.UserSequence[0].caption(), QString());
    st.p().main.AltCheckBox.setChecked(false);
    EXPECT_EQ(st.p().main.UserSequence[0].caption(), QStringLiteral("Changed"));
    EXPECT_EQ(st.p().main.RawCmdLabel[7].caption(), QStringLiteral("F12"));

    // Ctrl+F5 opens the editor on the first bank's sequence; opening it writes nothing.
    st.loop.runPosted();
    ASSERT_FALSE(st.p().settings.dirty());
    int f5 = kKeyF5;
    st.p().main.FreqDisplay.keyDown(f5, kCtrl);
    auto& ed = st.p().sequenceEditor;
    EXPECT_TRUE(ed.visible());
    EXPECT_EQ(ed.caption(), QStringLiteral("Tolvane User-defined Command Sequence: F5"));
    EXPECT_EQ(ed.SequenceName.text(), QStringLiteral("Changed"));
    EXPECT_FALSE(st.p().settings.dirty());
    // Each change is stored at once and reaches the button.
    ed.SequenceName.setText(QStringLiteral("Tune"));
    ed.CmdValue[0].setText(QStringLiteral("'AC111;"));
    st.loop.runPosted();
    EXPECT_EQ(st.stored(S, QStringLiteral("SequenceName_0")), QStringLiteral("Tune"));
    EXPECT_EQ(st.stored(S, QStringLiteral("CommandValue_0_0")), QStringLiteral("'AC111;"));
    EXPECT_EQ(st.p().main.UserSequence[0].caption(), QStringLiteral("Tune"));
    // A right click edits; a plain click runs.
    st.p().main.UserSequence[0].mouseDown(kLeftButton, 0, 0, 0);
    EXPECT_EQ(queued().last(), QStringLiteral("AC111;"));
    ed.Hide();
    st.p().main.UserSequence[3].mouseDown(kRightButton, 0, 0, 0);
    EXPECT_EQ(ed.caption(), QStringLiteral("Tolvane User-defined Command Sequence: F8"));
    // The suite link's short form.
    m().queue().InitializeXcvrCmdBuffer();
    m().hooks.ExecuteCommand(QStringLiteral("<wait>"));
    m().hooks.ExecuteCommand(QStringLiteral("'"));
    m().hooks.ExecuteCommand(QStringLiteral("'FA;"));
    m().hooks.ExecuteNamedSequence(QStringLiteral("tune"));
    EXPECT_EQ(queued(), (QStringList{QStringLiteral("W"), QStringLiteral("FA;"), QStringLiteral("AC111;")}));
}

}  // namespace
}  // namespace tv::test
