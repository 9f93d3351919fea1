#pragma once
// Readable Qt values in test failure messages.

#include <QByteArray>
#include <QString>

#include <ostream>

QT_BEGIN_NAMESPACE
inline void PrintTo(const QString& s, std::ostream* os) { *os << '"' << s.toStdString() << '"'; }
inline void PrintTo(const QByteArray& b, std::ostream* os) { *os << "hex " << b.toHex(' ').toStdString(); }
QT_END_NAMESPACE
