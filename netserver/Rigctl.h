#pragma once
// The rigctld text protocol, as the Linux ham programs speak it through "Hamlib NET rigctl": commands
// by a short letter (or one byte above 0x7f) or a long name after a backslash, several to a line, each
// taking as many words after it as it has arguments; values one a line in reply, "RPRT n" for a set or
// an error; a punctuation mark in front of a command asks for the extended response of that command.
// Pure functions and one client's session, with no sockets, so that all of it is tested with strings.

#include "netserver/RigBackend.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>

#include <optional>

namespace tv {

// Return codes of the protocol's "RPRT n" lines: Hamlib's error numbers, negated.
namespace RigctlCode {
inline constexpr int Ok = 0;
inline constexpr int Invalid = -1;         // a malformed argument
inline constexpr int NotImplemented = -4;  // a command of the protocol that this server doesn't do
inline constexpr int Timeout = -5;         // the radio didn't answer in time
inline constexpr int IoError = -6;         // nothing can reach the radio (no radio, or it doesn't answer)
inline constexpr int Protocol = -8;        // a word that names no command
inline constexpr int Rejected = -9;        // the program didn't queue the change
inline constexpr int NotAvailable = -11;   // the selected radio can't do it
inline constexpr int Security = -19;       // not logged in, or a wrong password
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
    GetSplitFreqMode,
    SetSplitFreqMode,
    GetLevel,
    SetLevel,
    GetFunc,
    SetFunc,
    GetRit,
    SetRit,
    GetXit,
    SetXit,
    GetDcd,
    GetPowerstat,
    SetPowerstat,
    GetInfo,
    GetRigInfo,
    GetVfoInfo,
    DumpState,
    DumpCaps,
    StreamCaps,
    ChkVfo,
    SetVfoOpt,
    GetLockMode,
    SetLockMode,
    GetClock,
    Power2mW,
    MW2Power,
    SendMorse,
    StopMorse,
    WaitMorse,
    SendCmd,
    Password,
    Quit,
    NotAvailable,    // a feature no radio of this program has through it
    NotImplemented,  // known to the protocol, not done here
};

// How a command's answer ends in the default response beside its values.
enum class RigctlTail : unsigned char {
    Plain,  // values alone for a get, "RPRT 0" for a set
    Rprt,   // values, then "RPRT 0" all the same (as rigctld does for these)
};

struct RigctlCommand {
    unsigned char shortName;  // 0 when the command has only a long name
    const char* longName;     // as written after the backslash
    RigctlOp op;
    int args;             // words taken after the command (after the VFO, in VFO mode)
    int optionalArgs;     // how many of the last may be left off at the end of a line
    bool vfoArg;          // in VFO mode a VFO comes first
    const char* keys[5];  // names of the returned values in the extended response; null: value alone
    RigctlTail tail;
};

// One command taken off a line. command is null for a word that names no command.
struct RigctlRequest {
    const RigctlCommand* command = nullptr;
    QByteArray word;  // the command as written, for the log and the echo
    QByteArray vfo;   // the VFO word in VFO mode
    QList<QByteArray> args;
    char separator = 0;  // 0: the default protocol; else the extended response's record separator
    bool malformed = false;
};

// The commands of a line in order; empty for a blank line or a comment. vfoMode: each command that
// takes a VFO has it in front of its arguments.
QList<RigctlRequest> parseRigctlLine(QByteArrayView line, bool vfoMode = false);
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
// The capability listing of rigctl's "dump_caps", the lines clients parse ("Can set Mode:\tY").
QByteArray rigctlDumpCaps(const RigCaps& caps);

// One client's conversation: each line in, the bytes of its answer out.
class RigctlSession {
  public:
    RigctlSession(RigBackend& backend, QString serverName, bool rawCommands = false, bool readOnly = false);

    // The answers to a line's commands, as far as they can be given now: a frequency read after a set
    // waits for the radio's report, and the commands after it with it (holding()).
    QByteArray answer(QByteArrayView line);
    bool holding() const { return !held_.isEmpty(); }
    // Who this session serves, as the log and the transmit owner name it.
    void setClient(const QString& client) { client_ = client; }
    const QString& client() const { return client_; }
    // The answers held back, once the radio has reported, or at once with force (the wait is over:
    // the frequency on show is given).
    QByteArray resume(bool force = false);
    // Set after "q" or too many commands without the password: the answer is the last one, and the
    // connection closes; closeReason() says why, for the log.
    bool closing() const { return closing_; }
    const QString& closeReason() const { return closeReason_; }
    // A client from another computer logs in first, as rigctld's clients do: "\password" with the secret
    // (the MD5 of the password, in hexadecimal). Before that only the commands a client sends when it
    // opens the rig are answered; every other is refused, and a few refusals end the connection.
    static constexpr int kMaxLoginFailures = 5;
    void requireLogin(const QByteArray& secret) {
        secret_ = secret;
        loggedIn_ = false;
    }
    bool loggedIn() const { return loggedIn_; }
    static QByteArray loginSecret(const QString& password);
    bool vfoMode() const { return vfoMode_; }

  private:
    struct Result {
        int code = RigctlCode::Ok;
        QList<QByteArray> values;
    };
    QByteArray answerHeld(bool force);
    bool awaitsLevel(const RigctlRequest& r);
    Result run(const RigctlRequest& r);
    Result set(bool queued) const;
    Result refuseLogin();
    QByteArray format(const RigctlRequest& r, const Result& result) const;
    // The VFO a command names: 0 the one received on, 1 the other; nullopt for a word that is no VFO.
    std::optional<int> target(const RigctlRequest& r) const;

    RigBackend& rig_;
    QString serverName_;
    bool rawCommands_ = false;
    bool readOnly_ = false;  // every change refused (an unkey excepted)
    bool closing_ = false;
    QString closeReason_;
    QByteArray secret_;  // empty: no login asked
    bool loggedIn_ = true;
    int loginFailures_ = 0;
    bool vfoMode_ = false;  // this client's own: another's \set_vfo_opt doesn't change it
    QList<RigctlRequest> held_;
    QString client_;
};

}  // namespace tv
