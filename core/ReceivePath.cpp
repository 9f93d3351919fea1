// All bytes from the link enter here.

#include "core/KavModule.h"

#include "forms/KavMain.h"
#include "services/Common.h"
#include "services/Errors.h"

namespace tv {

void KavModule::HandleIncomingChar(const QByteArray& text) {
    Guard("KavModule.HandleIncomingChar", [&] {
        if (RadioIndex < 0) return;
        if (!comm_.PortOpened()) {
            main_.setCaption(common_.info().title + QStringLiteral(" (could not obtain comm port)"));
            comm_.EnableCommRXEvents();
            return;
        }
        comm_.DisableCommRXEvents();
        QByteArray chunk = text.isEmpty() ? comm_.ReadPort() : text;
        while (!chunk.isEmpty()) {
            if (Protocol* p = protocol()) p->Receive(chunk);
            chunk = comm_.ReadPort();
        }
        comm_.EnableCommRXEvents();
    });
}

}  // namespace tv
