// The toolkit's application object and the few things every file of this folder asks for.
#pragma once

#include "platform/Fonts.h"

#include <QFont>
#include <QString>
#include <string>

class QApplication;
class QWidget;

namespace korlan {

// The application object; made at the first call unless a program (a test) has made its own.
QApplication& TheApplication();

QWidget* FormWindow(); // the window of the form, null while there is none

// The font nearest to `spec` among the installed ones; what `spec` leaves open comes from `base`.
QFont ToQFont(const FontSpec& spec, const QFont& base);

// The character set of a locale by its name ("pl_PL"), 1 where it has none of its own.
std::int32_t CharsetOfLocale(const QString& name);

inline QString ToQString(const std::string& utf8) {
    return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

// A text as it is shown. Names and sizes come from the server and may be of any length; nobody reads one longer than
// this, and laying out a megabyte takes a second.
inline QString ShownText(const std::string& utf8) {
    constexpr std::size_t kLongest = 2000;
    return utf8.size() <= kLongest ? ToQString(utf8) : ToQString(utf8.substr(0, kLongest)) + QChar(0x2026);
}

} // namespace korlan
