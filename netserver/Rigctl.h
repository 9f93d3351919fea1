#pragma once
// The rigctld text protocol, as the Linux ham programs speak it through "Hamlib NET rigctl": one
// command a line, a short letter or a long name after a backslash, values one a line in reply, "RPRT n"
// for a set or an error; a leading punctuation mark asks for the extended response. Pure functions and
// one client's session, with no sockets, so that all of it is tested with strings.

#include "netserver/RigBackend.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>

#include <optional>

namespace tv {

// Return codes of the protocol's "RPRT n" lines.
namespace RigctlCode {
inline constexpr int Ok = 0;
inline constexpr int Invalid = -1;         // a malformed line or argument
inline constexpr int NotImplemented = -4;  // a command of the protocol that this server doesn't do
inline constexpr int Rejected = -9;        // the program didn't queue the change
inline constexpr int NotAvailable = -11;   // the selected radio can't do it
}  // namespace RigctlCode

enum class RigctlOp {
    GetFreq,
    SetFreq,
    GetMode,
    SetMode,
    GetVfo,
    SetVfo,
    GetPtt,
    SetPtt,
    GetSplitVfo,
    SetSplitVfo,
    GetSplitFreq,
    SetSplitFreq,
    GetSplitMode,
    SetSplitMode,
    GetLevel,
    GetPowerstat,
    GetInfo,
    DumpState,
    ChkVfo,
    SetVfoOpt,
    GetLockMode,
    Quit,
    NotImplemented,
};

struct RigctlCommand {
    char shortName;        // 0 when the command has only a long name; may be a byte above 0x7f
    const char* longName;  // as written after the backslash
    RigctlOp op;
    int minArgs;
    int maxArgs;
    const char* keys[2];  // names of the returned values in the extended response
};

// One line taken apart. command is null for a word that names no command.
struct RigctlRequest {
    const RigctlCommand* command = nullptr;
    QByteArray word;  // the command as written, for the log
    QList<QByteArray> args;
    char separator = 0;  // 0: the default protocol; else the extended response's record separator
    bool empty = false;  // nothing to do: a blank line or a comment
    bool malformed = false;
};

RigctlRequest parseRigctlLine(QByteArrayView line);
const RigctlCommand* findRigctlCommand(QByteArrayView word);

// The protocol's mode tokens for the program's modes, and back (-1 for a token the program has no
// mode for). Bits are those of the mode masks in the state dump.
QByteArray rigctlModeName(int mode);
int rigctlModeFromName(QByteArrayView name);
quint64 rigctlModeBit(int mode);
// The width a mode has when nothing narrower or wider is chosen, in Hz.
int rigctlNormalPassband(int mode);
std::optional<RigVfo> rigctlVfoFromName(QByteArrayView name, bool* current = nullptr);
QByteArray rigctlVfoName(RigVfo vfo);
// Signal strength in dB relative to S9, from the meter's scale label when there is one ("S7" -12,
// "+20" 20), else spread evenly from S0 (-54) to S9+60 over the meter's full scale.
int rigctlStrength(double fraction, const QString& label);
// The state dump that the client reads when it opens the rig: ranges, modes, steps, filters and the
// capability masks of the selected radio, then key=value lines and "done".
QByteArray rigctlDumpState(const RigCaps& caps, const QString& serverName);

// One client's conversation: each line in, the bytes of its answer out.
class RigctlSession {
  public:
    RigctlSession(RigBackend& backend, QString serverName);

    QByteArray answer(QByteArrayView line);
    // Set after "q": the answer is the last one, and the connection closes.
    bool closing() const { return closing_; }

  private:
    struct Result {
        int code = RigctlCode::Ok;
        QList<QByteArray> values;
    };
    Result run(const RigctlRequest& r);
    Result set(bool queued) const;
    QByteArray format(const RigctlRequest& r, const Result& result) const;

    RigBackend& rig_;
    QString serverName_;
    bool closing_ = false;
};

}  // namespace tv
