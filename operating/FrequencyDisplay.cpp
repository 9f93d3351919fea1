#include "operating/FrequencyDisplay.h"

#include "core/CommandQueue.h"
#include "core/RadioState.h"
#include "forms/KavMain.h"
#include "operating/Bands.h"
#include "operating/Tuning.h"
#include "platform/Dialogs.h"
#include "services/Common.h"
#include "services/Errors.h"

#include <QApplication>

#include <algorithm>
#include <cmath>

namespace tv {

QString FormatFrequency(double kHz, int decimals, const QLocale& locale) {
    const QString plain = QString::number(std::fabs(kHz), 'f', decimals);  // "14025.126"
    const qsizetype dot = plain.indexOf(QLatin1Char('.'));
    QString whole = dot < 0 ? plain : plain.left(dot);
    const QString fraction = dot < 0 ? QString() : plain.mid(dot + 1);
    // "#" places show no leading zero: a frequency under 1 kHz has no whole part at all.
    if (whole == QLatin1String("0")) whole.clear();
    const QString group = locale.groupSeparator();
    QString grouped;
    for (qsizetype i = 0; i < whole.size(); ++i) {
        if (i > 0 && (whole.size() - i) % 3 == 0) grouped += group;
        grouped += whole.at(i);
    }
    QString text = kHz < 0 ? QStringLiteral("-") + grouped : grouped;
    if (decimals > 0) text += locale.decimalPoint() + fraction;
    return text;
}

double ParseFrequency(const QString& text, const QLocale& locale, bool* ok) {
    // The group mark may stand anywhere, as in the runtime's own conversion: it is dropped, not checked.
    QString t = text.trimmed();
    t.remove(locale.groupSeparator());
    bool good = false;
    const double v = locale.toDouble(t, &good);
    // "inf", "nan" and "1e300" convert, but no radio is tuned to them.
    *ok = good && CommandQueue::Tunable(v);
    return *ok ? v : 0;
}

FrequencyDisplay::FrequencyDisplay(Common& common, RadioState& state, CommandQueue& queue, KavMain& main,
                                   Bands& bands, Tuning& tuning, QLocale locale)
    : common_(common),
      state_(state),
      queue_(queue),
      main_(main),
      bands_(bands),
      tuning_(tuning),
      locale_(std::move(locale)) {
    tuning_.useDisplay(*this);
}

void FrequencyDisplay::connect() {
    RadioState& s = state_;
    QObject::connect(&s, &RadioState::frequencyChanged, &s, [this](double) {
        Guard("KavModule.UpdateFreqDisplay", [this] { UpdateFreqDisplay(); });
    });
    // The first frequency the radio reports puts the keyboard on the box, once a run.
    QObject::connect(&s, &RadioState::frequencyFocusWanted, &s, [this] {
        TextBox& f = main_.FreqDisplay;
        if (f.visible() && f.enabled()) f.SetFocus();
    });
    main_.FreqDisplay.KeyPress = [this](int& key) {
        Guard("KavMain.FreqDisplay_KeyPress", [&] { FreqDisplay_KeyPress(key); });
    };
}

QString FrequencyDisplay::DisplayText(double kHz) const {
    QString text = FormatFrequency(kHz, 3, locale_);
    // Cut, not rounded, to two decimals. The test is for a literal "." whatever the locale: in a
    // decimal-comma locale it finds the group mark, and below 1000 kHz there is none to find.
    if (text.contains(QLatin1Char('.'))) text.chop(1);
    return text;
}

void FrequencyDisplay::UpdateFreqDisplay() {
    const double freq = state_.RadioFreq;
    const QString text = DisplayText(freq);
    common_.DebugLog(QStringLiteral("KavModule.UpdateFreqDisplay, RadioFreq = ") +
                     QString::number(freq, 'g', 15));
    main_.FreqDisplay.setText(text);
    bands_.PlaceFrequency(freq);
    const double rounded = std::nearbyint(freq - double(bands_.RadioBand) * 1000.0);
    int offset = int(std::clamp(rounded, -32768.0, 32767.0));
    if (main_.HamBandSequence.checked()) bands_.KeepBandOffsetMemory(freq);
    tuning_.SetupBandspread();
    tuning_.PositionBandspread(offset);
    if (updateDevices) updateDevices();
}

void FrequencyDisplay::FreqDisplay_KeyPress(int& keyAscii) {
    if (keyAscii == '\r') {
        keyAscii = 0;
        bool ok = false;
        const double value = ParseFrequency(main_.FreqDisplay.text(), locale_, &ok);
        if (!ok) {
            common_.dialogs().messageBox(QString::fromLatin1(kBadEntryMessage), common_.info().title);
            UpdateFreqDisplay();
            return;
        }
        queue_.SetXcvrFreq(value);
        return;
    }
    if ((keyAscii >= '0' && keyAscii <= '9') || keyAscii == ',' || keyAscii == '.') return;
    keyAscii = 0;
    if (beep)
        beep();
    else if (qApp)
        QApplication::beep();
}

void SelectAllText(TextBox& box) {
    box.setSelStart(0);
    box.setSelLength(int(box.text().size()));
}

void LeftDeleteText(TextBox& box) {
    // {LEFT}: the caret one place left, any selection dropped.
    const int caret = std::max(0, box.selStart() - 1);
    box.setSelStart(caret);
    // {DELETE}: the character after the caret.
    if (caret < box.text().size()) {
        QString t = box.text();
        t.remove(caret, 1);
        box.setText(t);
        box.setSelStart(caret);
    }
}

void FrequencyDisplay::SelectAll() {
    SelectAllText(main_.FreqDisplay);
}

void FrequencyDisplay::LeftDelete() {
    LeftDeleteText(main_.FreqDisplay);
}

}  // namespace tv
