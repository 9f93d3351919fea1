#include "automation/Devices.h"

#include "automation/DeviceFile.h"
#include "core/Hooks.h"
#include "core/RadioState.h"
#include "forms/KavConfig.h"
#include "forms/KavMain.h"
#include "operating/FrequencyDisplay.h"
#include "platform/Dialogs.h"
#include "platform/SettingsStore.h"
#include "services/Common.h"
#include "services/Convert.h"
#include "services/Errors.h"

#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QSaveFile>

#include <cmath>

namespace tv {

namespace {

const QString kDevicesSection = QStringLiteral("Devices");
const QString kFileFilter = QStringLiteral("Text Files (*.txt)");

// The default rows of a new table: the bands' round edges, in kHz.
struct DefaultBand {
    double start, end, step;
};
constexpr DefaultBand kDefaultBands[] = {
    {1800, 2001, 25},   {3500, 4001, 50},    {7000, 7301, 50},      {10100, 10151, 50},
    {14000, 14351, 50}, {18050, 18201, 50},  {21000, 21451, 50},    {24850, 25001, 50},
    {28000, 29701, 50}, {50000, 54001, 100}, {144000, 148001, 100},
};

QChar decimalSeparator() {
    const QString p = QLocale().decimalPoint();
    return p.isEmpty() ? QLatin1Char('.') : p.at(0);
}

}  // namespace

Devices::Devices(Common& common, RadioState& state, UpperHooks& hooks, KavMain& main, KavConfig& config)
    : common_(common), state_(state), hooks_(hooks), main_(main), config_(config) {}

void Devices::connect(FrequencyDisplay& display) {
    UpperHooks& h = hooks_;
    h.InitializeDeviceGrids = [this] { InitializeDeviceGrids(); };
    h.LoadDevices = [this] { LoadDevices(); };
    h.SaveDevices = [this] { SaveDevices(); };
    // Last of the frequency display's steps, after the band and the bandspread.
    display.updateDevices = [this] { UpdateDevices(); };

    KavConfig& c = config_;
    KavMain& w = main_;
    auto handler = [](const char* label, auto body) { return [label, body] { Guard(label, body); }; };
    for (int d = 0; d < kDevices; ++d) {
        c.DeviceEnabled[d].Click =
            handler("KavConfig.DeviceEnabled_Click", [this, d] { DeviceEnabled_Click(d); });
        c.DeviceControls[d].Change =
            handler("KavConfig.DeviceControls_Change", [this, d] { DeviceControls_Change(d); });
        c.DeviceControls[d].KeyPress = [](int& key) {
            if (!(key == kKeyBack || (key >= '0' && key <= '9'))) key = 0;
        };
        c.DeviceName[d].Change = handler("KavConfig.DeviceName_Change", [this, d] { DeviceName_Change(d); });
        c.DeviceTolerance[d].Change =
            handler("KavConfig.DeviceTolerance_Change", [this, d] { DeviceTolerance_Change(d); });
        c.DeviceControl1[d].Change =
            handler("KavConfig.DeviceControl1_Change", [this, d] { DeviceControlName_Change(d, 1); });
        c.DeviceControl2[d].Change =
            handler("KavConfig.DeviceControl2_Change", [this, d] { DeviceControlName_Change(d, 2); });
        c.DeviceControl3[d].Change =
            handler("KavConfig.DeviceControl3_Change", [this, d] { DeviceControlName_Change(d, 3); });
        Grid& g = c.DeviceGrid[d];
        g.BeforeColUpdate = [this, d](int col, const QString&, int& cancel) {
            Guard("KavConfig.DeviceGrid_BeforeColUpddate", [&] {
                if (col != 0) return;
                const QString text = config_.DeviceGrid[d].editText();
                if (text.isEmpty() || !IsReal(text, decimalSeparator())) {
                    common_.dialogs().messageBox(QStringLiteral("invalid frequency"), common_.info().title);
                    cancel = 1;
                }
            });
        };
        g.AfterColUpdate = [this, d](int col) {
            Guard("KavConfig.DeviceGrid_AfterColUpdate", [&] {
                if (col == 0) SortDeviceArray(d);
                UpdateDevices();
            });
        };
        g.AfterDelete = handler("KavConfig.Devciegrid_AfterDelete", [this, d] {
            UpdateDeviceArrayDepth(d);
            UpdateDevices();
        });
        g.AfterInsert = handler("KavConfig.DeviceGrid_AfterInsert", [this, d] {
            UpdateDeviceArrayDepth(d);
            SortDeviceArray(d);
            UpdateDevices();
        });
        c.SelectDeviceFilenameCmd[d].Click =
            handler("KavConfig.LoadDeviceFilenameCmd_Click", [this, d] { selectFilename(d); });
        c.LoadDeviceCmd[d].Click = handler("KavConfig.LoadDeviceCmd_Click", [this, d] {
            LoadDeviceFreqData(config_.DeviceFilename[d].text(), d);
        });
        c.SaveDeviceCmd[d].Click = handler("KavConfig.LoadDeviceFilenameCmd_Click", [this, d] { saveAs(d); });
        c.ConfigDeviceHelpCmd[d].Click = handler("KavConfig.ConfigDeviceHelpCmd_Click", [this] {
            common_.InvokeHelp(QStringLiteral("Devices.htm"));
        });
        // The result boxes take no typing; the keys of the window still act, and the keyboard goes back
        // to the frequency box.
        for (TextBox* box : {&w.DeviceControl1[d], &w.DeviceControl2[d], &w.DeviceControl3[d]})
            box->KeyDown = [this](int&, int) {
                TextBox& f = main_.FreqDisplay;
                if (f.visible()) f.SetFocus();
            };
    }
}

// ---- start-up and shutdown ----

void Devices::InitializeDeviceGrids() {
    Guard("KavModule.InitializeDeviceGrids", [&] {
        for (int d = 0; d < kDevices; ++d) {
            config_.DeviceGrid[d].setRows({});
            DeviceDepth[size_t(d)] = 0;
            for (const DefaultBand& b : kDefaultBands) AddDeviceBand(d, b.start, b.end, b.step);
        }
    });
}

void Devices::AddDeviceBand(int device, double start, double end, double step) {
    Grid& g = config_.DeviceGrid[device];
    std::vector<GridRow> rows = g.rows();
    for (double f = start; f <= end && step > 0; f += step) {
        GridRow r = g.blankRow();
        r[0] = QString::number(f, 'f', 0);
        rows.push_back(std::move(r));
    }
    g.setRows(std::move(rows));
    DeviceDepth[size_t(device)] = g.rowCount();
}

void Devices::LoadDevices() {
    Guard("KavModule.LoadDevices", [&] {
        KavConfig& c = config_;
        for (int d = 0; d < kDevices; ++d) {
            LoadDeviceData(d);
            if (c.DeviceEnabled[d].checked() && !c.DeviceFilename[d].text().isEmpty())
                LoadDeviceFreqData(c.DeviceFilename[d].text(), d);
        }
        // The third device's frame takes the PTT frame's place.
        main_.PTTFrame.setVisible(!c.DeviceEnabled[2].checked() && !memoryBanksShown());
    });
    ready_ = true;
}

void Devices::LoadDeviceData(int d) {
    Guard("KavModule.LoadDeviceData", [&] {
        KavConfig& c = config_;
        SettingsStore& s = common_.settings();
        auto get = [&](const char* key, const QString& def) {
            return s.GetSetting(kDevicesSection, QString::fromLatin1(key) + QString::number(d), def);
        };
        c.DeviceName[d].setText(get("DeviceName", QStringLiteral("Device %1").arg(d)));
        c.DeviceFilename[d].setText(get("DeviceFilename", QString()));
        c.DeviceTolerance[d].setText(get("DeviceTolerance", QStringLiteral("2")));
        c.DeviceControl1[d].setText(get("DeviceControl1", QString()));
        c.DeviceControl2[d].setText(get("DeviceControl2", QString()));
        c.DeviceControl3[d].setText(get("DeviceControl3", QString()));
        c.DeviceControls[d].setText(get("DeviceControls", QStringLiteral("0")));
        // The boxes beyond the number of controls are hidden even when the number didn't change.
        DeviceControls_Change(d);
        c.DeviceEnabled[d].setChecked(get("DeviceEnabled", QStringLiteral("0")).trimmed() ==
                                      QLatin1String("1"));
    });
}

void Devices::SaveDevices() {
    Guard("KavModule.SaveDevices", [&] {
        for (int d = 0; d < kDevices; ++d) SaveDeviceData(d);
    });
}

void Devices::SaveDeviceData(int d) {
    Guard("KavModule.SaveDeviceData", [&] {
        KavConfig& c = config_;
        SettingsStore& s = common_.settings();
        auto put = [&](const char* key, const QString& value) {
            s.SaveSetting(kDevicesSection, QString::fromLatin1(key) + QString::number(d), value);
        };
        put("DeviceEnabled", c.DeviceEnabled[d].checked() ? QStringLiteral("1") : QStringLiteral("0"));
        put("DeviceName", c.DeviceName[d].text());
        put("DeviceFilename", c.DeviceFilename[d].text());
        put("DeviceTolerance", c.DeviceTolerance[d].text());
        put("DeviceControls", c.DeviceControls[d].text());
        put("DeviceControl1", c.DeviceControl1[d].text());
        put("DeviceControl2", c.DeviceControl2[d].text());
        put("DeviceControl3", c.DeviceControl3[d].text());
    });
}

// ---- the tables ----

void Devices::disable(int device, const QString& why) {
    config_.DeviceEnabled[device].setChecked(false);
    common_.dialogs().messageBox(QStringLiteral("disabling device ") + QString::number(device) + why,
                                 common_.info().title);
}

void Devices::LoadDeviceFreqData(const QString& filename, int device) {
    Guard("KavModule.LoadDeviceFreqData", [&] {
        KavConfig& c = config_;
        Common& common = common_;
        // Empty the device's table and its grid.
        DeviceDepth[size_t(device)] = 0;
        c.DeviceGrid[device].setRows({});
        // A device without a readable, non-empty file is turned off with the reason.
        if (filename.isEmpty()) return disable(device, QStringLiteral(": no data file specified"));
        if (!QFileInfo::exists(filename))
            return disable(device, QStringLiteral(": specified data file does not exist"));
        QFile f(filename);
        if (!f.open(QIODevice::ReadOnly))
            throw TvError(kErrPathFileAccess, filename + QStringLiteral(": ") + f.errorString());
        const QByteArray bytes = f.readAll();
        f.close();
        if (bytes.isEmpty()) return disable(device, QStringLiteral(":specified data fileis empty"));
        const DeviceFileContents file = ReadDeviceFile(bytes, filename, device, decimalSeparator());
        {
            FlagHold hold(loading_);
            // The header record, then each record, into the table.
            common.DebugLog(QStringLiteral("KavModule.LoadDeviceFreqData, initial device record = ") +
                            file.header);
            TextBox* names[3] = {&c.DeviceControl1[device], &c.DeviceControl2[device],
                                 &c.DeviceControl3[device]};
            for (int i = 0; i < file.controlNames.size(); ++i) names[i]->setText(file.controlNames[i]);
            c.DeviceControls[device].setText(QString::number(file.controlNames.size()));
            common.DebugLog(QStringLiteral("KavModule.LoadDeviceFreqData, initial device record processed"));
            // Log each record as read.
            for (int r = 0; r < file.recordLines.size(); ++r) {
                common.DebugLog(QStringLiteral("KavModule.LoadDeviceFreqData, device record %1 = ").arg(r) +
                                file.recordLines[r]);
                common.DebugLog(
                    QStringLiteral("KavModule.LoadDeviceFreqData, device record %1 processed").arg(r));
            }
            c.DeviceGrid[device].setRows(file.rows);
            DeviceDepth[size_t(device)] = int(file.rows.size());
            if (!file.message.isEmpty()) common_.dialogs().messageBox(file.message, common.info().title);
        }
        // Sort the table; an enabled device follows the radio at once.
        SortDeviceArray(device);
        if (c.DeviceEnabled[device].checked()) UpdateDevices();
    });
}

void Devices::SaveDeviceFreqData(const QString& filename, int device) {
    Guard("KavModule.SaveDeviceFreqData", [&] {
        KavConfig& c = config_;
        const QStringList names = {c.DeviceControl1[device].text(), c.DeviceControl2[device].text(),
                                   c.DeviceControl3[device].text()};
        std::vector<GridRow> rows = c.DeviceGrid[device].rows();
        rows.resize(size_t(std::max(0, std::min(DeviceDepth[size_t(device)], int(rows.size())))));
        // Written beside and then put in place: a crash leaves the old file or the new one, never half.
        QSaveFile f(filename);
        if (!f.open(QIODevice::WriteOnly))
            throw TvError(kErrPathFileAccess, filename + QStringLiteral(": ") + f.errorString());
        f.write(WriteDeviceFile(controlCount(device), names, rows));
        if (!f.commit()) throw TvError(kErrPathFileAccess, filename + QStringLiteral(": ") + f.errorString());
    });
}

void Devices::SortDeviceArray(int device) {
    Guard("KavModule.SortDeviceArray", [&] {
        Grid& g = config_.DeviceGrid[device];
        std::vector<GridRow>& rows = g.rows();
        const size_t depth = size_t(std::clamp(DeviceDepth[size_t(device)], 0, int(rows.size())));
        std::vector<GridRow> head(rows.begin(), rows.begin() + long(depth));
        SortDeviceRows(head);
        std::move(head.begin(), head.end(), rows.begin());
        g.Refresh();
    });
}

void Devices::UpdateDeviceArrayDepth(int device) {
    DeviceDepth[size_t(device)] = config_.DeviceGrid[device].rowCount();
}

// ---- the frames on the main window ----

int Devices::controlCount(int device) const {
    const double n = Val(config_.DeviceControls[device].text());
    return n < 0 ? 0 : n > 3 ? 3 : int(n);
}

bool Devices::ValidDeviceEntry(int device, int row) const {
    bool valid = false;
    Guard("KavModule.ValidDeviceEntry", [&] {
        const Grid& g = config_.DeviceGrid[device];
        CheckSubscript(row, 0, g.rowCount() - 1);
        valid = DeviceRowHasValues(g.rows()[size_t(row)], controlCount(device));
    });
    return valid;
}

void Devices::UpdateDevices() {
    if (!ready_ || loading_) return;
    // One device's broken table doesn't keep the others from following the frequency.
    for (int d = 0; d < kDevices; ++d)
        if (config_.DeviceEnabled[d].checked()) Guard("KavModule.UpdateDevices", [&] { updateOne(d); });
}

void Devices::updateOne(int d) {
    KavConfig& c = config_;
    KavMain& w = main_;
    const Grid& g = c.DeviceGrid[d];
    const int best = FindDeviceRow(g.rows(), DeviceDepth[size_t(d)], controlCount(d),
                                   Val(c.DeviceTolerance[d].text()), state_.RadioFreq);
    TextBox* boxes[3] = {&w.DeviceControl1[d], &w.DeviceControl2[d], &w.DeviceControl3[d]};
    for (int k = 0; k < 3; ++k) boxes[k]->setText(best < 0 ? QString() : g.cell(best, k + 1));
}

// ---- the device pages ----

bool Devices::memoryBanksShown() const {
    return main_.MemoryBankFrame.visible();
}

void Devices::DeviceEnabled_Click(int index) {
    KavMain& w = main_;
    const bool banks = memoryBanksShown();
    if (!config_.DeviceEnabled[index].checked()) {
        // Any device's frame going gives the PTT frame back, even while device 2 stays enabled.
        w.DeviceFrame[index].setVisible(false);
        w.PTTFrame.setVisible(!banks);
        return;
    }
    w.PTTFrame.setVisible(index != 2 && !banks);
    w.DeviceFrame[index].setVisible(!banks);
}

void Devices::DeviceControls_Change(int index) {
    KavConfig& c = config_;
    KavMain& w = main_;
    const int n = controlCount(index);
    Control* perControl[3][5] = {{&c.DeviceControl1[index], &c.DeviceControlLabel1[index],
                                  &w.DeviceControl1[index], &w.DeviceLabel1[index], nullptr},
                                 {&c.DeviceControl2[index], &c.DeviceControlLabel2[index],
                                  &w.DeviceControl2[index], &w.DeviceLabel2[index], nullptr},
                                 {&c.DeviceControl3[index], &c.DeviceControlLabel3[index],
                                  &w.DeviceControl3[index], &w.DeviceLabel3[index], nullptr}};
    for (int k = 0; k < 3; ++k) {
        for (Control* ctl : perControl[k])
            if (ctl) ctl->setVisible(k < n);
        c.DeviceGrid[index].setColumnVisible(k + 1, k < n);
    }
    UpdateDevices();
}

void Devices::DeviceControlName_Change(int index, int control) {
    KavConfig& c = config_;
    KavMain& w = main_;
    TextBox* names[3] = {&c.DeviceControl1[index], &c.DeviceControl2[index], &c.DeviceControl3[index]};
    Label* labels[3] = {&w.DeviceLabel1[index], &w.DeviceLabel2[index], &w.DeviceLabel3[index]};
    const QString& text = names[control - 1]->text();
    labels[control - 1]->setCaption(text);
    c.DeviceGrid[index].setColumnCaption(control, text);
}

void Devices::DeviceName_Change(int index) {
    const QString& name = config_.DeviceName[index].text();
    main_.DeviceFrame[index].setCaption(name);
    config_.ConfigTab.setTabCaption(index + 2, name);
}

void Devices::DeviceTolerance_Change(int index) {
    const double v = Val(config_.DeviceTolerance[index].text());
    // A value outside 0 to 100 is simply not acted on.
    if (v >= 0 && v <= 100) UpdateDevices();
}

void Devices::selectFilename(int device) {
    TextBox& name = config_.DeviceFilename[device];
    const QString path = common_.dialogs().openFile(
        QStringLiteral("Select the data file of ") + config_.DeviceName[device].text(), name.text(),
        kFileFilter);
    if (path.isEmpty()) return;
    name.setText(path);
    LoadDeviceFreqData(path, device);
}

void Devices::saveAs(int device) {
    TextBox& name = config_.DeviceFilename[device];
    QString path = common_.dialogs().saveFile(
        QStringLiteral("Save the data of ") + config_.DeviceName[device].text(), name.text(), kFileFilter);
    if (path.isEmpty()) return;
    if (QFileInfo(path).suffix().isEmpty()) path += QStringLiteral(".txt");
    name.setText(path);
    SaveDeviceFreqData(path, device);
}

}  // namespace tv
