#include "suitelink/DDECommon.h"

#include "core/XcvrCmd.h"
#include "forms/Form.h"
#include "platform/SuiteBus.h"
#include "services/Convert.h"
#include "services/Errors.h"

namespace tv {

const QStringList& DDEOtherVocabulary() {
    static const QStringList words = {
        "setbcfreqmode", "bcfreq", "bcqsx", "bcmode", "getqslinfo", "callsign", "lookup", "prefixlookup",
        "prefix", "call", "spotlookup", "showgrid", "updatewithgrid", "getprefix", "clearspots", "plotprefix",
        "plotcall", "plotgrid", "selectposition", "lat", "lon", "selectbearing", "rotatesp", "rotatelp", "newlog",
        "updateprogress", "updatestatus", "dxccid", "string", "updatelogfilter", "plotfullprefix", "band", "mode",
        "origin", "plotfullcall", "freq", "time", "index", "beaconlookup", "qth", "country", "cont", "cq", "itu",
        "timezone", "log", "eqsllog", "check", "getprogress", "ProgressPrefix", "ProgressBand", "ProgressMode",
        "newcallsign", "rotate", "newentry", "entrycallsign", "entryfreq", "entrymode", "logfilter",
        "tracktrillexfreq", "searchcallbook", "***disabled***", "clearcapture", "filterlog", "filterexpression",
        "filtercaption", "progressfilter", "progressfilterdxccprefix", "progressfilterbandcolumn",
        "progressfiltermoderow", "newwwv", "NewDate", "NewSFI", "NewA", "NewK", "setpower", "predict", "newawards",
        "UpdatedCallsign", "UpdatedBand", "UpdatedMode", "UpdatedDXCC", "UpdatedProgress", "spotstation",
        "SpotStationCallsign"};
    return words;
}

void DDECommon::ParseRecord(const QString& record) {
    Guard("DDECommon.ParseRecord", [&] {
        TokenCount = 0;
        QString work = record;
        while (!work.isEmpty()) {
            const qsizetype open = work.indexOf(QLatin1Char('<'));
            if (open < 0) break;
            if (work.mid(open, 5).toLower() == QLatin1String("<eor>")) break;
            const qsizetype close = work.indexOf(QLatin1Char('>'), open + 1);
            if (close < 0) break;
            const QString header = work.mid(open + 1, close - open - 1);
            const qsizetype colon = header.indexOf(QLatin1Char(':'));
            // A field without a length ends the parse; the fields read so far stand.
            if (colon < 0) break;
            const QString tag = header.left(colon);
            const std::int16_t length = CInt(header.mid(colon + 1));
            if (length < 0) throw TvError(kErrInvalidCall, QStringLiteral("negative field length"));
            // The value is taken by count, so '<' and '>' may stand inside it.
            const qsizetype valueStart = close + 1;
            if (valueStart + length > work.size()) throw TvError(kErrInvalidCall, QStringLiteral("field overruns the record"));
            const QString value = work.mid(valueStart, length);
            work = work.mid(valueStart + length);
            ++TokenCount;
            CheckSubscript(TokenCount - 1, 0, kMaxTokens - 1);
            Tokens[size_t(TokenCount - 1)] = DDEToken{tag, value};
        }
    });
}

DDEToken DDECommon::GetToken(std::int16_t index) {
    DDEToken token;
    Guard("DDECommon.GetToken", [&] {
        if (index > TokenCount) return;
        CheckSubscript(index - 1, 0, kMaxTokens - 1);
        token = Tokens[size_t(index - 1)];
    });
    return token;
}

void DDECommon::Activate(Form& window) {
    Guard("DDECommon.Activate", [&] {
        window.setWindowState(Form::Normal);
        if (window.raiseRequested) window.raiseRequested();
    });
}

void DDECommon::Iconify(const std::vector<Form*>& windows) {
    Guard("DDECommon.Iconify", [&] {
        for (Form* w : windows)
            if (w) w->setWindowState(Form::Minimized);
    });
}

QString DDECommon::EncodeField(const QString& tag, const QString& value) {
    QString out;
    Guard("DDECommon.EncodeField", [&] {
        out = QLatin1Char('<') + tag + QLatin1Char(':') + QString::number(value.size()) + QLatin1Char('>') + value;
    });
    return out;
}

bool DDECommon::IsRunning(SuiteBus& bus, int serverIndex) {
    bool running = false;
    Guard("DDECommon.IsRunning", [&] {
        CheckSubscript(serverIndex, 0, qsizetype(kDDEServerTable.size()) - 1);
        running = bus.isRunning(QString::fromLatin1(kDDEServerTable[size_t(serverIndex)].member));
    });
    return running;
}

QString DDECommon::ServerName(int serverIndex) {
    QString name;
    Guard("DDECommon.ServerName", [&] {
        CheckSubscript(serverIndex, 0, qsizetype(kDDEServerTable.size()) - 1);
        name = QString::fromLatin1(kDDEServerTable[size_t(serverIndex)].server);
    });
    return name;
}

QString DDECommon::ServerNickName(int serverIndex) {
    QString name;
    Guard("DDECommon.ServerNickName", [&] {
        CheckSubscript(serverIndex, 0, qsizetype(kDDEServerTable.size()) - 1);
        name = QString::fromLatin1(kDDEServerTable[size_t(serverIndex)].nickname);
    });
    return name;
}

QString DDECommon::ModeName(int mode) {
    QString name;
    Guard("DDECommon.ModeName", [&] { name = tv::ModeName(mode); });
    return name;
}

QString DDECommon::StripTrailingCRLF(const QString& text) {
    QString out = text;
    Guard("DDECommon.StripTrailingCRLF", [&] {
        while (out.endsWith(QLatin1Char('\n')) || out.endsWith(QLatin1Char('\r'))) out.chop(1);
    });
    return out;
}

QString DDECommon::SenderPrefix(int serverIndex) { return QStringLiteral("%1").arg(serverIndex, 3, 10, QLatin1Char('0')); }

}  // namespace tv
