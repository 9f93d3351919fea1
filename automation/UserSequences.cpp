#include "automation/UserSequences.h"

#include "core/CommandQueue.h"
#include "core/Hooks.h"
#include "forms/KavConfig.h"
#include "forms/KavMain.h"
#include "forms/UserCommandSequenceDefinition.h"
#include "platform/Dialogs.h"
#include "platform/EventLoop.h"
#include "platform/SettingsStore.h"
#include "services/Common.h"
#include "services/Convert.h"
#include "services/Errors.h"

namespace tv {

namespace {
const QString kSection = QStringLiteral("CommandSequences");
}

UserSequences::UserSequences(Common& common, CommandQueue& queue, UpperHooks& hooks, KavMain& main,
                             KavConfig& config, UserCommandSequenceDefinition& editor)
    : common_(common), queue_(queue), hooks_(hooks), main_(main), config_(config), editor_(editor) {}

void UserSequences::connect() {
    hooks_.LoadUserSequences = [this] { LoadUserSequences(); };
    hooks_.SaveUserSequences = [this] { SaveUserSequences(); };
    hooks_.ExecuteNamedSequence = [this](const QString& n) { ExecuteNamedSequence(n); };
    hooks_.ActivateSequence = [this](int b) { ActivateSequence(b); };
    hooks_.ExecuteCommand = [this](const QString& t) { ExecuteCommand(t); };
    KavMain& w = main_;
    auto focus = [this] {
        if (main_.FreqDisplay.visible()) main_.FreqDisplay.SetFocus();
    };
    for (int i = 0; i < 8; ++i)
        w.UserSequence[i].MouseDown = [this, i, focus](int button, int shift, double, double) {
            Guard("KavMain.UserSequence_MouseDown", [&] {
                KeyShiftState = shift;
                const int index = i + (main_.AltCheckBox.checked() ? 8 : 0);
                if (button == kRightButton || (shift & kCtrl))
                    EditSequence(index);
                else
                    ExecuteSequence(index);
                focus();
            });
        };
    w.AltCheckBox.Click = [this, focus] {
        Guard("KavMain.AltCheckBox_Click", [&] {
            UpdateSequenceCaptions();
            focus();
        });
    };
    // F5 to F12 in the frequency box, in front of whatever else handles its keys.
    auto previous = w.FreqDisplay.KeyDown;
    w.FreqDisplay.KeyDown = [this, previous](int& key, int shift) {
        if (key >= kKeyF5 && key <= kKeyF12) {
            const int button = key - kKeyF5;
            Guard("KavMain.FreqDisplay_KeyDown", [&] {
                KeyShiftState = shift;
                if (shift == kCtrl)
                    EditSequence(button);
                else
                    ActivateSequence(button);
            });
            key = 0;
            return;
        }
        if (previous) previous(key, shift);
    };

    auto store = [this](const QString& key, const QString& value) {
        common_.settings().SaveSetting(kSection, key, value);
    };
    editor_.SequenceName.Change = [this, store] {
        if (filling_) return;
        Guard("UserCommandeSequenceDefinition.SequenceName_Change", [&] {
            SequenceNames[size_t(CurrentSequence)] = editor_.SequenceName.text();
            store(QStringLiteral("SequenceName_%1").arg(CurrentSequence), editor_.SequenceName.text());
            UpdateSequenceCaptions();
        });
    };
    editor_.SequenceTooltip.Change = [this, store] {
        if (filling_) return;
        Guard("UserCommandeSequenceDefinition.SequenceTooltip_Change", [&] {
            SequenceFunctions[size_t(CurrentSequence)] = editor_.SequenceTooltip.text();
            store(QStringLiteral("SequenceFunction_%1").arg(CurrentSequence), editor_.SequenceTooltip.text());
            UpdateSequenceCaptions();
        });
    };
    for (int s = 0; s < kSteps; ++s) {
        editor_.CmdValue[s].Change = [this, s, store] {
            if (filling_) return;
            Guard("UserCommandeSequenceDefinition.CmdValue_Change", [&] {
                CommandValues[size_t(CurrentSequence)][size_t(s)] = editor_.CmdValue[s].text();
                store(QStringLiteral("CommandValue_%1_%2").arg(CurrentSequence).arg(s),
                      editor_.CmdValue[s].text());
            });
        };
        editor_.CmdNote[s].Change = [this, s, store] {
            if (filling_) return;
            Guard("UserCommandeSequenceDefinition.CmdNote_Change", [&] {
                CommandNotes[size_t(CurrentSequence)][size_t(s)] = editor_.CmdNote[s].text();
                store(QStringLiteral("CommandNote_%1_%2").arg(CurrentSequence).arg(s),
                      editor_.CmdNote[s].text());
            });
        };
    }
    editor_.ConfigComHelpCmd.Click = [this] {
        Guard("UserCommandeSequenceDefinition.ConfigComHelpCmd_Click",
              [this] { common_.InvokeHelp(QStringLiteral("CommandSequences.htm")); });
    };
    editor_.QueryUnload = [this](int& cancel, int mode) {
        Guard("UserCommandeSequenceDefinition.Form_QueryUnload", [&] {
            if (mode == 0) {
                cancel = 1;
                editor_.Hide();
            }
        });
    };
}

void UserSequences::LoadUserSequences() {
    Guard("KavModule.LoadUserSequences", [&] {
        SettingsStore& s = common_.settings();
        for (int n = 0; n < kSequences; ++n) {
            SequenceNames[size_t(n)] =
                s.GetSetting(kSection, QStringLiteral("SequenceName_%1").arg(n), QString());
            SequenceFunctions[size_t(n)] =
                s.GetSetting(kSection, QStringLiteral("SequenceFunction_%1").arg(n), QString());
            for (int st = 0; st < kSteps; ++st) {
                CommandNotes[size_t(n)][size_t(st)] =
                    s.GetSetting(kSection, QStringLiteral("CommandNote_%1_%2").arg(n).arg(st), QString());
                CommandValues[size_t(n)][size_t(st)] =
                    s.GetSetting(kSection, QStringLiteral("CommandValue_%1_%2").arg(n).arg(st), QString());
            }
        }
        UpdateSequenceCaptions();
    });
}

void UserSequences::SaveUserSequences() {
    Guard("KavModule.SaveUserSequences", [&] {
        SettingsStore& s = common_.settings();
        for (int n = 0; n < kSequences; ++n) {
            s.SaveSetting(kSection, QStringLiteral("SequenceName_%1").arg(n), SequenceNames[size_t(n)]);
            s.SaveSetting(kSection, QStringLiteral("SequenceFunction_%1").arg(n),
                          SequenceFunctions[size_t(n)]);
            for (int st = 0; st < kSteps; ++st) {
                s.SaveSetting(kSection, QStringLiteral("CommandNote_%1_%2").arg(n).arg(st),
                              CommandNotes[size_t(n)][size_t(st)]);
                s.SaveSetting(kSection, QStringLiteral("CommandValue_%1_%2").arg(n).arg(st),
                              CommandValues[size_t(n)][size_t(st)]);
            }
        }
    });
}

void UserSequences::UpdateSequenceCaptions() {
    UpdateSequenceBank(main_.AltCheckBox.checked() ? 8 : 0);
}

void UserSequences::UpdateSequenceBank(int base) {
    KavMain& w = main_;
    for (int i = 0; i < 8; ++i) {
        w.UserSequence[i].setCaption(SequenceNames[size_t(base + i)]);
        w.UserSequence[i].setToolTip(SequenceFunctions[size_t(base + i)]);
        w.RawCmdLabel[i].setCaption((base != 0 ? QStringLiteral("ALT F") : QStringLiteral("F")) +
                                    QString::number(i + 5));
    }
}

void UserSequences::ActivateSequence(int button) {
    Guard("KavModule.ActivateSequence", [&] {
        const int index = button + (main_.AltCheckBox.checked() ? 8 : 0);
        if (KeyShiftState & kCtrl)
            EditSequence(index);
        else
            ExecuteSequence(index);
    });
}

void UserSequences::fillEditor() {
    filling_ = true;
    const auto n = size_t(CurrentSequence);
    editor_.SequenceName.setText(SequenceNames[n]);
    editor_.SequenceTooltip.setText(SequenceFunctions[n]);
    for (int i = 0; i < kSteps; ++i) {
        editor_.CmdNote[i].setText(CommandNotes[n][size_t(i)]);
        editor_.CmdValue[i].setText(CommandValues[n][size_t(i)]);
    }
    filling_ = false;
}

void UserSequences::EditSequence(int index) {
    Guard("KavModule.EditSequence", [&] {
        if (index < 0 || index >= kSequences) return;
        CurrentSequence = index;
        fillEditor();
        const bool tips = config_.TooltipsCheckbox.checked();
        auto tip = [tips](const char* t) { return tips ? QString::fromLatin1(t) : QString(); };
        editor_.SequenceName.setToolTip(tip("Name of this command sequence"));
        editor_.SequenceTooltip.setToolTip(tip("Brief explanation of the function of this command sequence"));
        for (int i = 0; i < kSteps; ++i) {
            editor_.CmdValue[i].setToolTip(tip("Command (two hexadecimal digits per byte)"));
            editor_.CmdNote[i].setToolTip(tip("Optional note describing command's function"));
        }
        editor_.ConfigComHelpCmd.setToolTip(tip("display configuration help"));
        editor_.setCaption(
            main_.AltCheckBox.checked()
                ? QStringLiteral("Tolvane User-defined Command Sequence: ALT F%1").arg(index - 3)
                : QStringLiteral("Tolvane User-defined Command Sequence: F%1").arg(index + 5));
        editor_.Show();
        if (editor_.raiseRequested) editor_.raiseRequested();
    });
}

void UserSequences::showName(int index) {
    const bool alt = main_.AltCheckBox.checked();
    // Only a sequence of the bank on view has its button on screen.
    if (alt != (index >= 8)) return;
    const int button = alt ? index - 8 : index;
    main_.UserSequence[button].setCaption(SequenceNames[size_t(index)]);
    main_.UserSequence[button].setToolTip(SequenceFunctions[size_t(index)]);
}

void UserSequences::ExecuteSequence(int index) {
    Guard("KavModule.ExecuteSequence", [&] {
        CheckSubscript(index, 0, kSequences - 1);
        int s = 0;
        while (s <= kSteps - 1 && !stopping_) {
            CheckSubscript(s, 0, kSteps - 1);
            const QString c = CommandValues[size_t(index)][size_t(s)];
            const QString u = c.toUpper();
            common_.DebugLog(QStringLiteral("   command: ") + c);
            int next = s + 1;
            // An argument ends one character before the end: the closing ">" isn't checked.
            auto argument = [&](int from) {
                return c.mid(from, std::max<qsizetype>(0, c.size() - from - 1));
            };
            if (c.isEmpty()) {
            } else if (u == QLatin1String("<WAIT>")) {
                queue_.SetXcvrWait();
            } else if (u == QLatin1String("<END>")) {
                break;
            } else if (u.startsWith(QLatin1String("<GOTO "))) {
                next = CInt(argument(6)) - 1;
            } else if (u.startsWith(QLatin1String("<IFNAME "))) {
                const QString arg = argument(8).trimmed();
                const qsizetype comma = arg.indexOf(QLatin1Char(','));
                if (comma < 0) {
                    common_.dialogs().messageBox(QStringLiteral("Invalid command: ") + c,
                                                 QStringLiteral("Tolvane: Sequence Aborted"));
                    return;
                }
                const QString name = arg.left(comma).trimmed();
                if (name.compare(SequenceNames[size_t(index)], Qt::CaseInsensitive) == 0)
                    next = CInt(arg.mid(comma + 1)) - 1;
            } else if (u.startsWith(QLatin1String("<NAME "))) {
                SequenceNames[size_t(index)] = argument(6).trimmed();
                common_.settings().SaveSetting(kSection, QStringLiteral("SequenceName_%1").arg(index),
                                               SequenceNames[size_t(index)]);
                showName(index);
            } else if (u.startsWith(QLatin1String("<TOOLTIP "))) {
                SequenceFunctions[size_t(index)] = argument(9).trimmed();
                showName(index);
            } else if (c.startsWith(QLatin1Char('\''))) {
                if (c.size() > 1) queue_.SetXcvrstring(c.mid(1));
            } else {
                // Either case of hexadecimal digit: the queue reads upper case.
                queue_.SetXcvrRaw(c.toUpper());
            }
            // Other events run between steps: the operator can still act, and stop a looping sequence.
            // A jump back starts another round of a loop: nothing it could test changes until some event
            // comes, so it waits for one rather than spinning a core meanwhile.
            if (next >= 0 && next <= s)
                common_.loop().waitForEvents();
            else
                common_.loop().yield();
            s = next;
        }
    });
}

void UserSequences::ExecuteNamedSequence(const QString& name) {
    Guard("KavModule.ExecuteNamedSequence", [&] {
        const QString wanted = name.toUpper();
        for (int n = 0; n < kSequences; ++n)
            if (SequenceNames[size_t(n)].toUpper() == wanted) {
                ExecuteSequence(n);
                return;
            }
    });
}

void UserSequences::ExecuteCommand(const QString& text) {
    Guard("KavModule.ExecuteCommand", [&] {
        if (text.isEmpty()) return;
        if (text.compare(QLatin1String("<WAIT>"), Qt::CaseInsensitive) == 0)
            queue_.SetXcvrWait();
        else if (text.startsWith(QLatin1Char('\'')))
            (text.size() > 1) ? queue_.SetXcvrstring(text.mid(1)) : void();
        else
            queue_.SetXcvrRaw(text.toUpper());  // hexadecimal digits in either case
    });
}

}  // namespace tv
