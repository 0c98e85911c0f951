// The user's language: the country table of the suite INI file, its texts and its fonts, and the form dressed in both.
#pragma once

#include "app/base/Table.h"
#include "platform/Fonts.h"

#include <cstdint>
#include <string>

namespace korlan {

struct CountryEntry {
    std::string languageName; // part of the entry, read by nothing here
    std::string folderName;   // below the program folder's "COUNTRY"
    std::int32_t number = 0;
};

struct CountryTable { // section "COUNTRY"
    Table<CountryEntry> entries;
    std::int32_t selected = 0;       // "Default": entry in use ...
    std::int32_t selectedNumber = 0; // ... and the number behind it
};

struct FormFonts {
    FontSpec font;        // "Font": labels and the list
    FontSpec headFont;    // "HeadFont": headings
    FontSpec controlFont; // "ControlFont": buttons and options
};

struct Localisation {
    CountryTable countries;
    std::string languagePath; // folder of the language's files, without a trailing backslash
    FormFonts fonts;
};

inline Localisation Language;

// Reads the country table, hands the language folder to the suite's library, loads texts and fonts, and dresses the
// form. Whatever is missing (table, folder, text file, font file, suite library) leaves the English defaults.
void LoadLocalisation();

// Sets fonts and captions of the form and of every control; a caption becomes the localised text of its design caption.
void ApplyLanguageToForm();

} // namespace korlan
