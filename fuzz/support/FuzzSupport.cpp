#include "support/FuzzSupport.h"

#include "services/Errors.h"

#include <QCoreApplication>

#include <cstdio>
#include <cstdlib>

namespace tv::fuzz {

void ensureApp() {
    static int argc = 1;
    static char name[] = "fuzz";
    static char* argv[] = {name, nullptr};
    static QCoreApplication* app = nullptr;
    if (app || QCoreApplication::instance()) return;
    app = new QCoreApplication(argc, argv);
    // An error of the program is an answer to bad input, not a finding; it must not wait for a box.
    setErrorReporter([](int, const QString&, const QString&) {});
}

QString text(const uint8_t* data, size_t size) {
    return QString::fromLatin1(reinterpret_cast<const char*>(data), qsizetype(size));
}

void fail(const char* what, const QByteArray& detail) {
    std::fprintf(stderr, "property broken: %s\n  %s\n", what, detail.constData());
    std::abort();
}

}  // namespace tv::fuzz
