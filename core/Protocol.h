#pragma once
// The seam between the vendor-neutral queue and scheduler and one vendor family's command language.
// The supplier letter of the selected radio chooses the protocol object (I/T, K, Y, N, F).

#include "core/XcvrCmd.h"

#include <QByteArray>

namespace tv {

class Protocol {
public:
    virtual ~Protocol() = default;
    // Performs one queued record (never "Wait", "Raw" or "String": the queue does those itself).
    virtual void Execute(const XcvrCmd& cmd) = 0;
    // One interrogation step of the given phase (0..6); returns the next phase.
    virtual int InterrogationStep(int phase) = 0;
    // The frequency and mode requests, sent at once, past the queue.
    virtual void RequestFrequency() = 0;
    virtual void RequestMode() = 0;
    // A "String" record's text. Serial radios put it on the link as it stands (the default does that
    // through the module); the console radio sends it to its command channel.
    virtual bool SendString(const QByteArray& /*text*/) { return false; }
    // One complete message, framed by the receive path, is in the module's RcvBuffer (from index 1,
    // RcvCount bytes): decode it.
    virtual void Decode() {}
    // The supplier's own part of bringing a newly chosen radio up.
    virtual void BringUp() {}
};

}  // namespace tv
