// How the controls answer, once for all: the logic relies on a value set by code raising the same
// event as a gesture, only when the value really changes, and on guard flags to tell the two apart.

#include "forms/Controls.h"
#include "forms/Form.h"
#include "platform/SimEventLoop.h"

#include "support/QtPrinters.h"

#include <gtest/gtest.h>

namespace tv {
namespace {

struct Counter {
    int n = 0;
    std::function<void()> fn() {
        return [this] { ++n; };
    }
};

class Controls : public ::testing::Test {
protected:
    SimEventLoop loop;
    Form form{loop, QStringLiteral("KavMain"), QStringLiteral("Tolvane")};
};

TEST_F(Controls, ValuesRaiseTheirEventOnlyWhenTheyChange) {
    CheckBox box(&form, QStringLiteral("SplitBox"));
    TextBox text(&form, QStringLiteral("FreqDisplay"));
    ScrollBar bar(&form, QStringLiteral("Bandspread"));
    Label label(&form, QStringLiteral("SMeterValue"));
    Counter cb, ct, cs, cl;
    box.Click = cb.fn();
    text.Change = ct.fn();
    bar.Change = cs.fn();
    label.Change = cl.fn();

    box.setChecked(true);
    box.setChecked(true);
    box.setValue(CheckBox::Grayed);
    box.userClick();  // from grayed, a click checks
    EXPECT_EQ(cb.n, 3);
    EXPECT_TRUE(box.checked());

    text.setText(QStringLiteral("14025.50"));
    text.setText(QStringLiteral("14025.50"));
    EXPECT_EQ(ct.n, 1);

    bar.setRange(0, 1000);
    bar.setValue(2000);  // held at the end of the range
    bar.setValue(1000);
    EXPECT_EQ(bar.value(), 1000);
    EXPECT_EQ(cs.n, 1);
    // Dragging raises Scroll as it goes; Change comes only with the value set at release.
    Counter scroll;
    bar.Scroll = scroll.fn();
    bar.dragTo(400);
    bar.dragTo(410);
    EXPECT_EQ(scroll.n, 2);
    EXPECT_EQ(cs.n, 1);

    label.setCaption(QStringLiteral("S9"));
    label.setCaption(QStringLiteral("S9"));
    EXPECT_EQ(cl.n, 1);
}

TEST_F(Controls, OptionButtonsExcludeEachOtherAndOnlyTheChosenOneClicks) {
    OptionGroup group;
    ControlArray<OptionButton> modes(&form, QStringLiteral("ModeSel"), 0, 9, &group);
    std::vector<int> clicked;
    for (int i = 0; i <= 9; ++i) modes[i].Click = [&, i] { clicked.push_back(i); };
    modes[3].setValue(true);
    modes[1].setValue(true);
    modes[1].setValue(true);
    modes[1].setValue(false);  // clearing raises nothing
    EXPECT_EQ(clicked, (std::vector<int>{3, 1}));
    EXPECT_FALSE(modes[3].value());
    EXPECT_EQ(group.selected(), nullptr);
    EXPECT_EQ(modes[7].fullName(), QStringLiteral("ModeSel(7)"));
    EXPECT_EQ(form.findControl(QStringLiteral("ModeSel(7)")), &modes[7]);
    EXPECT_TRUE(modes.has(9));
    EXPECT_FALSE(modes.has(10));
    EXPECT_THROW(modes[10], std::out_of_range);
}

TEST_F(Controls, ListsFillWithoutEventsAndClickOnANewSelection) {
    ComboBox list(&form, QStringLiteral("FilterGroupCombo"));
    Counter c;
    list.Click = c.fn();
    list.AddItem(QStringLiteral("Wide"));
    list.AddItem(QStringLiteral("Narrow"));
    list.AddItem(QStringLiteral("Normal"), 1);
    EXPECT_EQ(list.items(), (QStringList{QStringLiteral("Wide"), QStringLiteral("Normal"), QStringLiteral("Narrow")}));
    EXPECT_EQ(c.n, 0);
    list.setListIndex(2);
    list.setListIndex(2);
    EXPECT_EQ(c.n, 1);
    EXPECT_EQ(list.text(), QStringLiteral("Narrow"));
    list.Clear();
    EXPECT_EQ(list.listIndex(), -1);
    EXPECT_EQ(c.n, 1);
    EXPECT_EQ(list.List(5), QString());  // out of range reads as empty
}

TEST_F(Controls, TypingGoesThroughKeyPressWhichMaySwallowTheKey) {
    TextBox poll(&form, QStringLiteral("PollInterval"));
    // Only digits and backspace, as the poll interval takes them.
    poll.KeyPress = [](int& k) {
        if (!(k == 8 || (k >= '0' && k <= '9'))) k = 0;
    };
    for (char ch : QByteArray("2x0a0")) poll.typeChar(ch);
    EXPECT_EQ(poll.text(), QStringLiteral("200"));
    poll.typeChar(8);
    EXPECT_EQ(poll.text(), QStringLiteral("20"));
    poll.setSelStart(0);
    poll.setSelLength(2);
    poll.typeChar('5');  // replaces the selection
    EXPECT_EQ(poll.text(), QStringLiteral("5"));
}

// The program marks its own change of a control with a flag held around it, so that the handler doesn't
// take it for a gesture; the flag is down again afterwards.
TEST_F(Controls, AHeldFlagTellsTheProgramsChangeFromAGesture) {
    CheckBox split(&form, QStringLiteral("SplitBox"));
    bool held = false;
    std::vector<bool> seen;
    split.Click = [&] { seen.push_back(held); };
    {
        FlagHold hold(held);
        split.setChecked(true);
    }
    EXPECT_FALSE(held);
    split.userClick();
    EXPECT_EQ(seen, (std::vector<bool>{true, false}));
}

TEST_F(Controls, FocusMovesWithItsEvents) {
    TextBox freq(&form, QStringLiteral("FreqDisplay"));
    CommandButton band(&form, QStringLiteral("BandUpCmd"));
    std::vector<QString> events;
    freq.GotFocus = [&] { events.push_back(QStringLiteral("freq+")); };
    freq.LostFocus = [&] { events.push_back(QStringLiteral("freq-")); };
    band.GotFocus = [&] { events.push_back(QStringLiteral("band+")); };
    freq.SetFocus();
    band.SetFocus();
    EXPECT_EQ(events, (std::vector<QString>{QStringLiteral("freq+"), QStringLiteral("freq-"), QStringLiteral("band+")}));
    EXPECT_TRUE(band.hasFocus());
}

}  // namespace
}  // namespace tv
