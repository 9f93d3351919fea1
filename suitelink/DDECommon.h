#pragma once
// What every member of the station suite shares on the suite link: the command string's shape, the
// tagged record that carries arguments, the server table and the common vocabulary, and the two
// window commands.

#include <QString>
#include <QStringList>

#include <array>
#include <cstdint>
#include <vector>

namespace tv {

class Form;
class SuiteBus;

// One field of a tagged record.
struct DDEToken {
    QString Tag;
    QString Value;
};

struct DDEServerEntry {
    const char* server;
    const char* nickname;
    const char* member;
};

// The members of the suite; the position is the three-digit sender of a command string.
inline constexpr std::array<DDEServerEntry, 7> kDDEServerTable{{
    {"XcvrControlServer", "TV", "Tolvane"},
    {"LogServer", "QK", "Quolark"},
    {"QSLInfoServer", "VR", "Veyrun"},
    {"AtlavonServer", "AV", "Atlavon"},
    {"SpotServer", "BC", "Brindlecast"},
    {"PropagationServer", "IM", "Ionmere"},
    {"ModeServer", "TX", "Trillex"},
}};

// The suite's words, spelt once so that every member spells them alike.
namespace DDEWord {
inline constexpr char Test[] = "test";
inline constexpr char Shutdown[] = "shutdown";
inline constexpr char Iconify[] = "iconify";
inline constexpr char Activate[] = "activate";
inline constexpr char ResetWindows[] = "resetwindows";
inline constexpr char Start[] = "start";
inline constexpr char Stop[] = "stop";
inline constexpr char Transmit[] = "transmit";
inline constexpr char Receive[] = "receive";
inline constexpr char SeqName[] = "seqname";
inline constexpr char SeqIndex[] = "seqindex";
inline constexpr char XcvrCommand[] = "xcvrcommand";
inline constexpr char QSY[] = "qsy";
inline constexpr char Split[] = "split";
inline constexpr char XcvrFreqMode[] = "xcvrfreqmode";
inline constexpr char XcvrSetModeCmd[] = "xcvrsetmodecmd";
// Record fields of those verbs.
inline constexpr char XcvrFreq[] = "xcvrfreq";
inline constexpr char XcvrMode[] = "xcvrmode";
inline constexpr char XcvrSetModeArg[] = "xcvrsetmodearg";
}  // namespace DDEWord

// The rest of the common vocabulary, in the suite's order: words this program has no action for.
const QStringList& DDEOtherVocabulary();

class DDECommon {
public:
    static constexpr int kMaxTokens = 100;
    // This program's index in the server table.
    static constexpr int kOwnIndex = 0;

    // Parses a tagged record into Tokens and TokenCount; failures are reported, and what was parsed stands.
    void ParseRecord(const QString& record);
    // Field by a count from 1; past TokenCount both strings are empty. Index 0 or less is reported.
    DDEToken GetToken(std::int16_t index);

    // Normal state, then to the top.
    void Activate(Form& window);
    // Every open window of the program, hidden ones too, minimised.
    void Iconify(const std::vector<Form*>& windows);

    // Members the suite shares that this program doesn't call itself.
    static QString EncodeField(const QString& tag, const QString& value);
    std::int16_t GetParsedTokenCount() const { return TokenCount; }
    static bool IsRunning(SuiteBus& bus, int serverIndex);
    static QString ServerName(int serverIndex);
    static QString ServerNickName(int serverIndex);
    static QString ModeName(int mode);
    static QString StripTrailingCRLF(const QString& text);
    // The sender piece of a command string: the index formatted with "000".
    static QString SenderPrefix(int serverIndex = kOwnIndex);

    std::int16_t TokenCount = 0;
    std::array<DDEToken, kMaxTokens> Tokens{};
};

}  // namespace tv
