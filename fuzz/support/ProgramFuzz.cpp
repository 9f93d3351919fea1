#include "support/ProgramFuzz.h"

#include "support/FuzzSupport.h"

#include <QApplication>

namespace tv::fuzz {

test::TestStation& station() {
    static test::TestStation* st = [] {
        static int argc = 1;
        static char name[] = "fuzz";
        static char* argv[] = {name, nullptr};
        qputenv("QT_QPA_PLATFORM", "offscreen");
        new QApplication(argc, argv);
        ensureApp();
        auto* s = new test::TestStation();
        const QString g = QStringLiteral("General");
        s->preset(g, QStringLiteral("Radio"), QStringLiteral("TS-2000"));
        s->preset(g, QStringLiteral("CommPort"), QStringLiteral("1"));
        s->preset(g, QStringLiteral("Interrogate"), QStringLiteral("F"));
        if (!s->start()) fail("the program did not start");
        return s;
    }();
    return *st;
}

}  // namespace tv::fuzz
