#pragma once
// The XML-RPC methods of the other common rig-control server on Linux (port 12345), as the programs set
// up for it call them: fldigi, WSJT-X and JTDX through Hamlib's "FLRig" model, JS8Call, QLog. One call
// in, one answer out, over the same backend as the rigctld server; the HTTP around it is FlrigServer's.

#include "netserver/RigBackend.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QVariant>

namespace tv {

// A parsed call: the method's name and its parameters (int, double, bool, QString, or QVariantList).
struct XmlRpcCall {
    QString method;
    QVariantList params;
    QString error;  // why the request is no call ("" when it is one)
};

// The request body to a call. XML comes from the stream reader, never from scanning text: declarations,
// processing instructions (Hamlib sends <?clientid=...?>), comments and entities are the reader's.
XmlRpcCall ParseXmlRpcCall(const QByteArray& body);
// A response holding one value, or a fault.
QByteArray XmlRpcResponse(const QVariant& value);
QByteArray XmlRpcFault(int code, const QString& text);

class FlrigSession {
  public:
    // client: who calls, as the log and the transmit owner name it. rawCommands: rig.cat_string may put
    // the client's own bytes on the radio's line.
    FlrigSession(RigBackend& backend, QString client, bool rawCommands = false)
        : rig_(backend), client_(std::move(client)), rawCommands_(rawCommands) {}

    // The whole response body to a request body. Never throws; a call it can't serve is a fault.
    QByteArray answer(const QByteArray& body);
    // The methods served, as system.listMethods lists them.
    static QStringList methods();

  private:
    QVariant call(const XmlRpcCall& c, QString* fault);

    RigBackend& rig_;
    QString client_;
    bool rawCommands_;
};

}  // namespace tv
