#include "support/TestStation.h"

#include <QDir>
#include <QFile>

namespace tv::test {

const char* const kTestCatalogue =
    "' radios for the core's tests\n"
    "RADIO=IIC-756PRO, ADDRESS=5C, DUALWATCH=T, FILTER0=T, SMETER=T, PTT=T\n"
    "RADIO=IIC-7300, ADDRESS=94, FILTER0=T, SMETER=T, PTT=T, DATAMODE=T, TXLEVELS=T\n"
    "RADIO=IIC-735, ADDRESS=04, FILTERBYTE=F, SHORTFREQ=T, VFOEQUAL=F\n"
    "RADIO=IIC-775, ADDRESS=46, MAINSUBSEL=T, MAINSUBEQUAL=T, MAINSUBEXCHANGE=T\n"
    "RADIO=KTS-2000, SMETER=T, PTT=T, TXLEVELS=T\n"
    "RADIO=YFT817, SMETER=T, PTT=T, SPLIT=F, VFOEQUAL=F\n"
    "RADIO=YFT1000D, SMETER=T, DUALWATCH=T\n"
    "RADIO=YMP1000, SMETER=T, DUALWATCH=T\n"
    "RADIO=TOMNI VI, ADDRESS=04\n"
    "RADIO=NORION, SMETER=T\n"
    "RADIO=NPEGASUS, SERIALPORT=F\n"
    "RADIO=FFLEX-5000, SERIALPORT=F, SMETER=T\n";

TestStation::TestStation(const QString& catalogue) {
    configDir = dir.path() + QStringLiteral("/config");
    appDir = dir.path() + QStringLiteral("/app");
    QDir().mkpath(configDir);
    QDir().mkpath(appDir);
    if (!catalogue.isNull()) {
        QFile f(appDir + QStringLiteral("/Radios.txt"));
        if (f.open(QIODevice::WriteOnly)) f.write(catalogue.toUtf8());
    }
}

TestStation::~TestStation() { stop(); }

void TestStation::preset(const QString& section, const QString& key, const QString& value) {
    SettingsStore s(configDir + QStringLiteral("/Tolvane.ini"), nullptr);
    s.SaveSetting(section, key, value);
}

bool TestStation::start() {
    ProgramPaths paths;
    paths.configDir = configDir;
    paths.appDir = appDir;
    program = std::make_unique<Program>(loop, dialogs, paths, [this] {
        auto d = std::make_unique<FakeSerialDevice>(loop);
        devices.push_back(d.get());
        if (onDevice) onDevice(*d);
        return d;
    });
    for (auto& [letter, rec] : recordings) wrap(letter, *rec);
    if (onCreate) onCreate(*program);
    const bool ok = program->FormLoad();
    loop.runPosted();
    return ok;
}

void TestStation::stop() {
    if (!program) return;
    program->FormUnload();
    loop.runPosted();
    program.reset();
    devices.clear();
}

QString TestStation::log() const {
    QFile f(configDir + QStringLiteral("/ErrorLog.txt"));
    if (!f.open(QIODevice::ReadOnly)) return {};
    return QString::fromUtf8(f.readAll());
}

QString TestStation::stored(const QString& section, const QString& key, const QString& def) const {
    SettingsStore s(configDir + QStringLiteral("/Tolvane.ini"), nullptr);
    return s.GetSetting(section, key, def);
}

void TestStation::selectRadio(const QString& name) {
    auto& combo = program->config.RadioCombo;
    {
        FlagHold hold(program->module.flags.flags[FlagRadioCombo]);
        SetCombo(combo, name);
    }
    program->module.UpdateRadio(true);
    loop.runPosted();
}

Recording& TestStation::record(QChar supplier) {
    auto& slot = recordings[supplier];
    if (!slot) {
        slot = std::make_unique<Recording>();
        if (program) wrap(supplier, *slot);
    }
    return *slot;
}

void TestStation::wrap(QChar supplier, Recording& rec) { recordFamily(program->module.radio(), supplier, rec); }

}  // namespace tv::test
