#include "app/localise/UpdtFONT.h"

#include "app/base/LocalText.h"
#include "app/base/Paths.h"
#include "app/base/Settings.h"
#include "app/base/TextHelpers.h"
#include "app/base/frmUpdate.h"
#include "platform/IniFile.h"
#include "platform/Log.h"
#include "platform/SuiteLibrary.h"
#include "platform/TextLibrary.h"

#include <algorithm>

namespace korlan {

namespace {

constexpr const char* kCountrySection = "COUNTRY";
constexpr const char* kDefaultEntry = "English,English,65535";
constexpr std::int32_t kMostCountries = 1000; // a wrong "Number" must cost neither memory nor time

// Piece `index` of a comma-separated text, or `fallback` where it has none.
std::string PieceOr(const std::string& text, std::size_t index, const std::string& fallback) {
    const std::vector<std::string> pieces = Split(text, ",");
    return index < pieces.size() ? pieces[index] : fallback;
}

CountryEntry ReadCountry(std::int32_t index) {
    const std::string entry = ReadIniString(kCountrySection, DecimalText(index), kDefaultEntry);
    return {PieceOr(entry, 0, "English"), PieceOr(entry, 1, "English"), Val(PieceOr(entry, 2, "65535"))};
}

CountryTable ReadCountryTable() {
    CountryTable table;
    table.entries.Resize(std::clamp(Val(ReadIniString(kCountrySection, "Number", "1")), 0, kMostCountries));
    const std::string selected = ReadIniString(kCountrySection, "Default", "");
    table.selected = Val(PieceOr(selected, 0, ""));
    table.selectedNumber = Val(PieceOr(selected, 1, ""));
    for (std::int32_t i = 1; i <= table.entries.UpperBound(); ++i) table.entries[i] = ReadCountry(i);
    return table;
}

// The selected entry's folder; the first entry's when none of that number is there, English when there is no entry.
std::string LanguageFolder(const CountryTable& table) {
    const std::int32_t count = table.entries.UpperBound();
    if (count == 0) return "English";
    const bool inTable = table.selected >= 1 && table.selected <= count;
    return table.entries[inTable ? table.selected : 1].folderName;
}

void TellSuiteLibrary(const std::string& languagePath) {
    try {
        E_SetString("LANGUAGEPATH", languagePath);
    } catch (const RuntimeError& error) { // without the suite's library this program still runs
        LogTrapped("TellSuiteLibrary", error);
    }
}

FontSpec ReadFont(const std::string& file, const char* section, const FontSpec& fallback) {
    constexpr std::size_t kBufferSize = 256;
    constexpr std::int32_t kSmallest = 6, kLargest = 36; // points
    const auto read = [&](const char* key, const std::string& otherwise) {
        return ReadProfileValue(section, key, kBufferSize, file).value_or(otherwise);
    };
    FontSpec font = fallback;
    if (const std::string face = Trim(read("Name", "")); !face.empty()) font.face = face;
    if (const std::int32_t size = Val(read("Size", "")); size >= kSmallest && size <= kLargest)
        font.points = static_cast<float>(size);
    const std::string charset = read("CharSet", "");
    font.charset = charset.empty() ? DefaultCharset() : std::clamp(Val(charset), 0, 255);
    font.bold = Val(read("Bold", font.bold ? "1" : "0")) != 0;
    return font;
}

FormFonts ReadFonts(const std::string& file) {
    return {ReadFont(file, "Font", {.face = "MS Sans Serif", .points = 9}),
            ReadFont(file, "HeadFont", {.face = "Arial", .points = 14, .bold = true}),
            ReadFont(file, "ControlFont", {.face = "MS Sans Serif", .points = 9})};
}

const FontSpec& FontOf(const Control& control) {
    if (control.Place().font != FontRole::Body) return Language.fonts.headFont;
    const bool isCommand = control.Kind() == ControlKind::Button || control.Kind() == ControlKind::OptionButton;
    return isCommand ? Language.fonts.controlFont : Language.fonts.font;
}

void ApplyLanguage(Control& control) {
    control.SetFont(FontOf(control));
    if (auto* captioned = dynamic_cast<CaptionedControl*>(&control))
        captioned->SetCaption(GetLocalText(captioned->DesignCaption(), captioned->Tag()));
}

} // namespace

void LoadLocalisation() {
    Language.countries = ReadCountryTable();
    Language.languagePath = GetAppFolder() + "\\COUNTRY\\" + LanguageFolder(Language.countries);
    TellSuiteLibrary(Language.languagePath);
    L32_Object_Create(Trim(Language.languagePath + "\\KLNLOCAL.TXT"));
    Language.fonts = ReadFonts(Language.languagePath + "\\KLW32VFONT.EVF");
    ApplyLanguageToForm();
}

void ApplyLanguageToForm() {
    ApplyLanguage(frmUpdate.form);
    for (Control* control : frmUpdate.form.Controls()) ApplyLanguage(*control);
}

} // namespace korlan
