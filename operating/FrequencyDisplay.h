#pragma once
// The frequency box: shows RadioFreq in the user's locale, cut (not rounded) to two decimals, and takes
// the operator's typed frequency on Enter. Every change of RadioFreq passes UpdateFreqDisplay, which
// also keeps the band position, the ham-band rule and the bandspread in step.

#include <QLocale>
#include <QString>

#include <functional>

namespace tv {

class Bands;
class Common;
class RadioState;
class CommandQueue;
class KavMain;
class Tuning;

// A frequency by a pattern of "###,###." and the given number of decimals, in the locale's marks:
// groups of three, no leading zero.
QString FormatFrequency(double kHz, int decimals, const QLocale& locale);
// A typed frequency in the locale's marks, group marks wherever they stand; ok false for text that
// isn't one finite number.
double ParseFrequency(const QString& text, const QLocale& locale, bool* ok);

class TextBox;
// The editing keys the frequency boxes share. Insert: the whole text selected, so that the next digit
// replaces it. Backspace: caret left, then delete (the key's own character is then refused by the
// box's filter).
void SelectAllText(TextBox& box);
void LeftDeleteText(TextBox& box);

class FrequencyDisplay {
  public:
    static constexpr const char* kBadEntryMessage =
        "valid characters include numeric digits, commas, and no more than one decimal point";

    FrequencyDisplay(Common& common, RadioState& state, CommandQueue& queue, KavMain& main, Bands& bands,
                     Tuning& tuning, QLocale locale = QLocale::system());
    FrequencyDisplay(const FrequencyDisplay&) = delete;
    FrequencyDisplay& operator=(const FrequencyDisplay&) = delete;

    void connect();

    void UpdateFreqDisplay();
    // The box's display form of a frequency ("###,###.000" less its last character when it holds a
    // "."), and the preview form ("###,###.00").
    QString DisplayText(double kHz) const;
    QString PreviewText(double kHz) const { return FormatFrequency(kHz, 2, locale_); }
    const QLocale& locale() const { return locale_; }
    // The number format of the display and of typed entries (the user's locale unless told otherwise).
    void setLocale(const QLocale& locale) { locale_ = locale; }

    void FreqDisplay_KeyPress(int& keyAscii);
    // Insert: select all, so that the next digit replaces the whole text.
    void SelectAll();
    // Backspace: caret left, then delete (the key's own character is then refused by the filter).
    void LeftDelete();

    // Frequency-driven devices; called last on every frequency change when set.
    std::function<void()> updateDevices;
    // The refusal of a typed character; the system's beep when unset.
    std::function<void()> beep;

  private:
    Common& common_;
    RadioState& state_;
    CommandQueue& queue_;
    KavMain& main_;
    Bands& bands_;
    Tuning& tuning_;
    QLocale locale_;
};

}  // namespace tv
