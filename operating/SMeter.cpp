#include "operating/SMeter.h"

#include "core/Hooks.h"
#include "core/RadioState.h"
#include "core/SelectedRadio.h"
#include "forms/KavMain.h"
#include "platform/Dialogs.h"
#include "services/Common.h"
#include "services/Errors.h"

#include <QFile>
#include <QFileInfo>
#include <QTextStream>

#include <algorithm>
#include <cmath>

namespace tv {

namespace {
constexpr std::uint32_t rgb(int r, int g, int b) {
    return std::uint32_t(r & 0xFF) | (std::uint32_t(g & 0xFF) << 8) | (std::uint32_t(b & 0xFF) << 16);
}

struct ColorWord {
    const char* word;
    std::uint32_t color;
};
constexpr ColorWord kColorWords[] = {
    {"GREEN", rgb(0, 255, 0)},     {"RED", rgb(255, 0, 0)},    {"MAGENTA", rgb(255, 0, 255)},
    {"WHITE", rgb(255, 255, 255)}, {"BLACK", rgb(0, 0, 0)},    {"BLUE", rgb(0, 0, 255)},
    {"YELLOW", rgb(255, 255, 0)},  {"CYAN", rgb(0, 255, 255)},
};
}  // namespace

SMeter::SMeter(Common& common, RadioState& state, SelectedRadio& radio, UpperHooks& hooks, KavMain& main)
    : common_(common), state_(state), radio_(radio), hooks_(hooks), main_(main) {
    SMeterColor.fill(kGreen);
}

void SMeter::connect() {
    RadioState& s = state_;
    QObject::connect(&s, &RadioState::meterReported, &s,
                     [this](double f) { Guard("KavModule.UpdateSMeter", [&] { UpdateSMeter(f); }); });
    // A radio that told its model has its own scale, or none.
    QObject::connect(&s, &RadioState::identified, &s, [this](const RadioIdentity& who) {
        if (!who.meterFile.isEmpty()) LoadSMeterData(who.meterFile);
        KavMain& w = main_;
        w.SMeterValue.setVisible(w.SMeter.visible());
        Guard("KavModule.SetSMeter", [&] { SetSMeter(QString()); });
        w.SMeterDummy.setVisible(!who.hasMeter);
    });
    hooks_.LoadSMeterData = [this] { LoadSMeterData(); };
    hooks_.SetSMeter = [this](const QString& t) { Guard("KavModule.SetSMeter", [&] { SetSMeter(t); }); };
}

std::uint32_t SMeter::ParseColor(const QString& field) {
    const QString f = field.trimmed().toUpper();
    for (const ColorWord& w : kColorWords)
        if (f == QLatin1String(w.word)) return w.color;
    const QStringList parts = f.split(QLatin1Char('-'));
    if (parts.size() != 3) return kGreen;
    int v[3];
    for (int i = 0; i < 3; ++i) {
        bool ok = false;
        v[i] = parts[i].trimmed().toInt(&ok);
        if (!ok) return kGreen;
        v[i] = std::clamp(v[i], 0, 255);
    }
    return rgb(v[0], v[1], v[2]);
}

int SMeter::StepOf(double fraction) {
    // A radio may read below its own zero (the FT-100 counts down from a top value): still the first step.
    return std::clamp(int(std::floor(fraction * 15 + 0.5)) + 1, 1, kSteps);
}

void SMeter::LoadSMeterData() {
    QString name;
    if (const Protocol* p = radio_.protocol()) name = p->SMeterFile();
    if (name.isEmpty())
        if (const RadioInfo* r = radio_.info()) name = r->comboName;
    LoadSMeterData(name);
}

void SMeter::LoadSMeterData(const QString& filename) {
    Guard("KavModule.LoadSMeterData", [&] {
        SMeterFilename = filename;
        SMeterCount = 0;
        const QString path =
            common_.info().appPath + QStringLiteral("/SMeter/") + filename + QStringLiteral(".txt");
        if (filename.isEmpty() || !QFileInfo(path).isFile()) return;  // no scale: raw mode, silently
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) throw TvError(kErrPathFileAccess, path);
        const QString title = common_.info().title;
        auto box = [&](const QString& text) { common_.dialogs().messageBox(text, title); };
        const QString head = QStringLiteral("Error in S Meter file ") + filename;
        QTextStream in(&file);
        while (!in.atEnd()) {
            ++SMeterCount;
            if (SMeterCount > kSteps) break;
            const QString line = in.readLine();
            const int first = line.indexOf(QLatin1Char(','));
            if (first < 0) {
                box(head + QStringLiteral(" entry # ") + QString::number(SMeterCount) +
                    QStringLiteral(" - expecting at least two parameters separated by a comma "));
                SMeterCount = 0;
                break;
            }
            bool ok = false;
            const int index = line.left(first).trimmed().toInt(&ok);
            if (!ok || index != SMeterCount) {
                box(head + QStringLiteral(" entry # ") + QString::number(SMeterCount) +
                    QStringLiteral(" - index (first value) is incorrect "));
                SMeterCount = 0;
                break;
            }
            const int second = line.indexOf(QLatin1Char(','), first + 1);
            const size_t slot = size_t(SMeterCount - 1);
            if (second >= 0) {
                SMeterLabel[slot] = line.mid(first + 1, second - first - 1);
                SMeterColor[slot] = ParseColor(line.mid(second + 1));
            } else {
                SMeterLabel[slot] = line.mid(first + 1);
                SMeterColor[slot] = kGreen;
            }
        }
        file.close();
        common_.LogLine(QStringLiteral("KavModule.LoadSMeterData, SMeterFilename = ") + filename +
                        QStringLiteral(", SMeterCount = ") + QString::number(SMeterCount));
        if (SMeterCount == 0) {
            box(QStringLiteral("S Meter file ") + filename +
                QStringLiteral(" is empty; raw meter data will be displayed"));
        } else if (SMeterCount > kSteps) {
            box(head + QStringLiteral(" - more than 16 entries found; only the first 16 will be used"));
            SMeterCount = kSteps;
        } else if (SMeterCount < kSteps) {
            box(head + QStringLiteral(" - only ") + QString::number(SMeterCount) +
                QStringLiteral(" entries found"));
            SMeterCount = 0;
        }
    });
}

void SMeter::UpdateSMeter(double fraction) {
    // A radio may report below zero ("SM-001;") or past full scale: the scale has no step for either.
    if (!std::isfinite(fraction)) return;
    fraction = std::clamp(fraction, 0.0, 1.0);
    KavMain& w = main_;
    QString label;
    if (w.SMeter.visible()) {
        PictureBox& bar = w.SMeter;
        const double width = bar.scaleWidth(), height = bar.scaleHeight();
        const double filled = std::round(width * fraction);
        const int step = StepOf(fraction);
        std::uint32_t color = kGreen;
        if (SMeterCount > 0) {
            label = SMeterLabel[size_t(step - 1)];
            color = SMeterColor[size_t(step - 1)];
        } else {
            label = QString::number(step);
        }
        // The two boxes cover the whole picture: what was drawn before is dropped, not stacked. A reading
        // that moves nothing (the usual case) leaves the picture, and its window, alone.
        const auto& drawn = bar.shapes();
        const bool same = drawn.size() == 2 && drawn[0].x2 == filled && drawn[0].y2 == height - 1 &&
                          drawn[0].color == color && drawn[1].x1 == filled && drawn[1].x2 == width &&
                          drawn[1].y2 == height - 1;
        if (!same) {
            bar.Cls();
            bar.draw({PictureBox::Shape::FilledBox, 0, 0, filled, height - 1, color, {}});
            bar.draw({PictureBox::Shape::FilledBox, filled, 0, width, height - 1, kBlack, {}});
        }
        SetSMeter(label);
    }
    // Single precision, as the decoders compute it.
    if (float(fraction) != lastReading_ || lastReadingText_.isEmpty()) {
        lastReading_ = float(fraction);
        lastReadingText_ = QString::number(double(lastReading_), 'g', 7);
    }
    state_.SetItem(QStringLiteral("RadioSMeter"), lastReadingText_);
    state_.SetItem(QStringLiteral("RadioSMeterString"), label);
}

void SMeter::SetSMeter(const QString& text) {
    KavMain& w = main_;
    Label& value = w.SMeterValue;
    if (text.isEmpty()) {
        value.setVisible(false);
        return;
    }
    value.setVisible(true);
    const int textWidth = int(text.size() + 1) * kCharWidth;  // a space before the text
    value.setBounds(w.VFOFrame.width() - w.VFOFrame.left() - textWidth, value.top(), textWidth,
                    value.height());
    value.setCaption(text);
}

void SMeter::SetSDRSMeter(const QString& text) {
    Guard("KavModule.SetSDRSMeter", [&] {
        bool ok = false;
        const double percent = text.trimmed().toDouble(&ok);
        if (!ok) throw TvError(kErrTypeMismatch, text);
        UpdateSMeter(percent / 100.0);
    });
}

}  // namespace tv
