#include "platform/Fonts.h"

#include "platform/linux/desktop/Application.h"

#include <QLocale>
#include <array>
#include <utility>

namespace korlan {

namespace {

constexpr std::int32_t kCharsetWestern = 0;
constexpr std::int32_t kCharsetDefault = 1;

struct LanguageCharset {
    const char* languages; // two-letter codes, each between blanks
    std::int32_t charset;
};

constexpr std::array<LanguageCharset, 13> kCharsets{{
    {" bs cs hr hu pl ro sk sl sq ", 238}, // Central European
    {" be bg kk mk ru sr tg uk ", 204},    // Cyrillic
    {" el ", 161},
    {" az tr ", 162},
    {" he ", 177},
    {" ar fa ur ", 178},
    {" et lt lv ", 186}, // Baltic
    {" vi ", 163},
    {" th ", 222},
    {" ja ", 128},
    {" ko ", 129},
    {" da de en es fi fr is it nb nl nn no pt sv ", kCharsetWestern},
    {" af ca eu ga gl id ms sw ", kCharsetWestern},
}};

constexpr std::int32_t kCharsetChineseSimplified = 134;
constexpr std::int32_t kCharsetChineseTraditional = 136;

} // namespace

std::int32_t CharsetOfLocale(const QString& name) {
    const QLocale locale(name);
    if (locale.language() == QLocale::C) return kCharsetDefault;
    if (locale.language() == QLocale::Chinese)
        return locale.script() == QLocale::TraditionalHanScript ? kCharsetChineseTraditional
                                                                : kCharsetChineseSimplified;
    const QString code = ' ' + locale.name().section('_', 0, 0) + ' ';
    for (const LanguageCharset& entry : kCharsets)
        if (QLatin1String(entry.languages).contains(code)) return entry.charset;
    return kCharsetDefault;
}

std::int32_t DefaultCharset() {
    return CharsetOfLocale(QLocale::system().name());
}

QFont ToQFont(const FontSpec& spec, const QFont& base) {
    QFont font = base;
    if (!spec.face.empty()) font.setFamily(ToQString(spec.face));
    if (spec.points > 0) font.setPointSizeF(static_cast<qreal>(spec.points));
    if (spec != FontSpec{}) font.setBold(spec.bold); // what the program has never dressed keeps the host's look
    return font;
}

} // namespace korlan
