#include "coresupport/CoreRig.h"

#include "protocols/Families.h"

#include <QFile>

namespace tv::test {

namespace {
const char* const kCatalogue =
    "RADIO=IIC-756PRO, ADDRESS=5C, DUALWATCH=T, FILTER0=T, SMETER=T, PTT=T, MAINSUBSEL=T\n"
    "RADIO=IIC-735, ADDRESS=04, FILTERBYTE=F, SHORTFREQ=T, VFOEQUAL=F\n"
    "RADIO=KTS-2000, SMETER=T, PTT=T\n"
    "RADIO=YFT817, SMETER=T, PTT=T, SPLIT=F, VFOEQUAL=F\n"
    "RADIO=YFT1000D, SMETER=T, DUALWATCH=T\n"
    "RADIO=TOMNI VI, ADDRESS=04\n"
    "RADIO=NORION, SMETER=T\n"
    "RADIO=FFLEX-5000, SERIALPORT=F, SMETER=T\n";
}  // namespace

CoreRig::CoreRig(const QString& catalogue)
    : settings(dir.path() + QStringLiteral("/Tolvane.ini"), &loop),
      common(loop, settings, dialogs, AppInfo{QStringLiteral("Tolvane"), 0, 1, 0, dir.path(), QStringLiteral("tolvane"), dir.path()}),
      comm(common,
           [this] {
               auto d = std::make_unique<FakeSerialDevice>(loop);
               serial = d.get();
               return d;
           }),
      state(common),
      link(common, comm, radio, state, view),
      queue(common, radio, state, link, view, hooks),
      radio(common, view) {
    common.Initialize();
    radio.catalogue.parse(catalogue.isNull() ? QString::fromLatin1(kCatalogue) : catalogue);
    registerFamilies(radio);
    comm.devicePath = [](int port) { return QStringLiteral("/dev/ttyTEST%1").arg(port); };
    comm.onData = [this] { link.HandleIncomingChar(QByteArray()); };
}

CoreRig::~CoreRig() { radio.clear(); }

void CoreRig::withRadio(const QString& name, const QString& address) {
    int index = -1;
    for (int i = 0; i < radio.catalogue.count(); ++i)
        if (radio.catalogue.at(i).comboName.compare(name, Qt::CaseInsensitive) == 0) index = i;
    Q_ASSERT(index >= 0);
    view.address = address.isNull() ? radio.catalogue.at(index).defaultAddress : address;
    radio.choose(index, context);
    radio.ValidID();
    comm.OpenPort(1, 9600, QStringLiteral("N"), QStringLiteral("8"), QStringLiteral("1"), 0, 0);
    if (Protocol* p = radio.protocol()) p->BringUp();
    queue.InitializeXcvrCmdBuffer();
    loop.runPosted();
    sent();
}

QStringList CoreRig::queued() const {
    QStringList out;
    for (const XcvrCmd& c : queue.queued()) out << CommandName(c.theCmd);
    return out;
}

QByteArray CoreRig::sent() {
    if (!serial) return {};
    QByteArray out = serial->written;
    serial->written.clear();
    return out;
}

void CoreRig::wire(const QByteArray& bytes) {
    serial->feed(bytes);
    loop.runPosted();
}

QByteArray CoreRig::tick() {
    sent();
    loop.advance(queue.XcvrCmdTimer.Interval());
    return sent();
}

Recording& CoreRig::record(QChar supplier) {
    recordings.push_back(std::make_unique<Recording>());
    recordFamily(radio, supplier, *recordings.back());
    return *recordings.back();
}

QString CoreRig::log() const {
    QFile f(dir.path() + QStringLiteral("/ErrorLog.txt"));
    return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
}

}  // namespace tv::test
