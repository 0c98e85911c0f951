#include "library/ElementMerge.h"

#include "app/base/LocalText.h"
#include "app/base/TextHelpers.h"
#include "app/base/frmUpdate.h"
#include "library/PartDatabase.h"
#include "library/SearchSequence.h"
#include "library/SuiteText.h"
#include "platform/Log.h"
#include "platform/MsgBox.h"
#include "platform/RuntimeError.h"

#include <algorithm>
#include <iterator>

namespace korlan {

namespace {

constexpr std::int32_t kOverwriteStyle = 40;
constexpr std::int32_t kChoiceYes = -1, kChoiceCancel = 1;
constexpr std::int32_t kLibraryNotOpened = 80;

struct LocalWord {
    const char* text;
    const char* identifier;
    std::string Text() const { return text ? GetLocalText(text, identifier) : std::string(); }
};
constexpr LocalWord kInLibrary{" in lib: ", "99765"};

// What differs between the four kinds; the codes are those of ShowLibError.
struct ElementKind {
    const char* libraryType;
    LocalWord alreadyStored;
    LocalWord word;
    std::int32_t notFound, notLoaded, notRenamed, notSaved;
    ElementHandle (*create)();
    MapHandle (*map)();
    bool (*load)(ElementHandle, LibraryHandle);
    bool (*save)(ElementHandle, LibraryHandle);
};

constexpr ElementKind SymbolLike(LocalWord alreadyStored, LocalWord word) {
    return {.libraryType = kSymbolLibraryType,
            .alreadyStored = alreadyStored,
            .word = word,
            .notFound = 6,
            .notLoaded = 5,
            .notRenamed = 19,
            .notSaved = 10,
            .create = S_Symbol,
            .map = DB_SymbMap,
            .load = S_LoadSymbol,
            .save = S_SaveSymbol};
}

// Padstacks have no question of their own; they ask as packages.
constexpr ElementKind kKinds[] = {
    {.libraryType = kPartLibraryType,
     .alreadyStored = {" Part is already stored in lib:", "991483"},
     .word = {"Part ", "5828"},
     .notFound = 13,
     .notLoaded = 15,
     .notRenamed = 17,
     .notSaved = 20,
     .create = D_Device,
     .map = DB_DeviceMap,
     .load = D_LoadDevice,
     .save = D_SaveDevice},
    SymbolLike({" Symbol is already stored in lib:", "991882"}, {"Symbol ", "4467"}),
    SymbolLike({" Package is already stored in lib:", "991482"}, {" Package ", "991884"}),
    SymbolLike({" Package is already stored in lib:", "991482"}, {" Padstack ", "991883"}),
};

struct LibError {
    std::int32_t code;
    bool named; // the name stands between the two texts
    LocalWord before;
    LocalWord after;
};

constexpr LocalWord kNothing{nullptr, nullptr};
constexpr LocalWord kAlreadyLoaded{" already loaded", "99197"};
constexpr LocalWord kFromDiskLibrary{" from disk library", "99708"};
constexpr LibError kLibErrors[] = {
    {1, true, {"Symbol/Package: ", "991282"}, {" is not used in any part", "99788"}},
    {2, false, {"Can't quit at this time", "99362"}, kNothing},
    {5, true, {"Can't load Symbol/Package: ", "99357"}, kNothing},
    {6, true, {"Can't find Symbol/Package: ", "99350"}, kNothing},
    {7, true, {"Symbol/Package with name: ", "991280"}, kAlreadyLoaded},
    {8, false, {"Can't Read Browser Profile", "99394"}, kNothing},
    {10, true, {"Can't save Symbol/Package: ", "99380"}, kNothing},
    {13, true, {"Can't find Part: ", "99345"}, kNothing},
    {14, true, {"Can't read Part: ", "99364"}, kNothing},
    {15, true, {"Can't load Part: ", "99353"}, kNothing},
    {17, true, {"Part with name: ", "99558"}, kAlreadyLoaded},
    {18, true, {"Can't delete Part: ", "99338"}, kFromDiskLibrary},
    {19, true, {"Can't rename Symbol/Package: ", "99360"}, kNothing},
    {20, true, {"Can't save Part: ", "99375"}, kNothing},
    {21, true, {"Can't delete Symbol/Package: ", "99342"}, kFromDiskLibrary},
    {70, false, {"No Part File selected", "99940"}, kNothing},
    {76, false, {"Can't create temporary Padstack", "99328"}, kNothing},
    {77, true, {"Can't find Symbol in the search sequence: ", "5094"}, kNothing},
    {78, true, {"Can't find Package in the search sequence: ", "5095"}, kNothing},
    {79, true, {"Can't find Padstack in the search sequence: ", "5096"}, kNothing},
    {kLibraryNotOpened, true, {"Can't open library: ", "99361"}, kNothing},
    {120, false, {"Element Template File Invalid.", "99648"}, kNothing},
    {122, false, {"Model Template File Invalid.", "99899"}, kNothing},
    {200, true, {"Library File: ", "3341"}, {" not found", "99962"}},
    {300, false, {"Library Browser Options Error ", "5060"}, kNothing},
};

// A library of the suite, closed at the end of the block.
class OpenedLibrary {
public:
    OpenedLibrary(const std::string& path, const char* type) : handle_(E_OpenLibrary(path, type, 0)) {}
    OpenedLibrary(const OpenedLibrary&) = delete;
    OpenedLibrary& operator=(const OpenedLibrary&) = delete;
    ~OpenedLibrary() {
        if (!IsOpen()) return;
        try {
            E_CloseLibrary(handle_);
        } catch (const RuntimeError&) { // a library without that procedure has nothing to close
        }
    }
    bool IsOpen() const { return handle_ > 0; }
    LibraryHandle Handle() const { return handle_; }

private:
    LibraryHandle handle_;
};

// One merge: the kind and the two libraries. Each step answers whether the next one may be taken.
struct Merge {
    const ElementKind& kind;
    const std::string& source;
    const std::string& target;
    bool ended = false; // no further element is tried

    bool Fail(std::int32_t code, const std::string& name) const {
        ShowLibError(code, name);
        return false;
    }

    bool EndWithTarget() {
        ended = true;
        return Fail(kLibraryNotOpened, target);
    }

    bool EndWithSource() {
        ended = true;
        ShowMsgBox(GetLocalText("Source library not found : ", "5084") + source, kBoxExclamation,
                   frmUpdate.form.Caption());
        return false;
    }

    bool MayWrite(const std::string& name) {
        {
            const OpenedLibrary library(target, kind.libraryType);
            if (!library.IsOpen()) return EndWithTarget();
            if (!E_OpenLibToRead(library.Handle(), name)) return true;
        }
        const std::string question =
            kind.alreadyStored.Text() + target + "\n" + GetLocalText("Overwrite anyway ?", "99987");
        const std::int32_t choice =
            OverwriteChoice(ShowMsgBox(question, kOverwriteStyle, GetLocalText("Update", "448")));
        ended = choice == kChoiceCancel;
        return choice == kChoiceYes;
    }

    bool Load(const std::string& name, ElementHandle& element) {
        const OpenedLibrary library(source, kind.libraryType);
        if (!library.IsOpen()) return EndWithSource();
        if (!E_OpenLibToRead(library.Handle(), name)) return Fail(kind.notFound, name);
        if (OM_SearchName(kind.map(), name) > 0) OM_Delete(kind.map(), name);
        element = kind.create();
        return (element > 0 && kind.load(element, library.Handle())) || Fail(kind.notLoaded, name);
    }

    bool Rename(const std::string& name, ElementHandle element) const {
        return O_Rename(element, name) || Fail(kind.notRenamed, name);
    }

    bool Save(const std::string& name, ElementHandle element) {
        const OpenedLibrary library(target, kind.libraryType);
        if (!library.IsOpen()) return EndWithTarget();
        return (E_OpenLibToWrite(library.Handle(), name) && kind.save(element, library.Handle()) &&
                E_CloseLibWrite(library.Handle())) ||
               Fail(kind.notSaved, name + kInLibrary.Text() + target);
    }

    void MergeElement(const std::string& name) {
        ElementHandle element = 0;
        if (!MayWrite(name) || !Load(name, element) || !Rename(name, element) || !Save(name, element)) return;
        EditMsgline(kind.word.Text() + name + GetLocalText(" from ", "991880") + source +
                    GetLocalText(" to ", "991881") + target);
        if (&kind == &kKinds[kPartKind - 1]) UpdateLibDB(target, element);
    }
};

} // namespace

void FillItemsList(const std::string& libraryPath) {
    Elements = {};
    const OpenedLibrary library(libraryPath, libraryPath.ends_with(".PART") ? kPartLibraryType : kSymbolLibraryType);
    Elements.library = library.Handle();
    if (!library.IsOpen()) return;
    for (std::string name; !(name = SuiteText(E_GetLibDirName())).empty();) Elements.names.Append(name);
}

void SaveToLib(const std::string& sourceLibrary, const std::string& targetLibrary) {
    if (Flags.LibElementKind < kPartKind || Flags.LibElementKind > kPadstackKind) return;
    Merge merge{kKinds[Flags.LibElementKind - 1], sourceLibrary, targetLibrary};
    try {
        FillItemsList(sourceLibrary);
    } catch (const RuntimeError& error) { // without the suite's library there is nothing to merge
        LogTrapped("SaveToLib", error);
        return;
    }
    if (Elements.library <= 0) merge.EndWithSource();
    for (std::int32_t i = 1; i <= Elements.names.UpperBound() && !merge.ended; ++i) {
        try {
            merge.MergeElement(Elements.names[i]);
        } catch (const RuntimeError& error) { // the next element may fare better
            LogTrapped("MergeElement", error);
        }
    }
}

std::int32_t OverwriteChoice(std::int32_t boxAnswer) {
    switch (boxAnswer) {
    case kAnswerCancel: return kChoiceCancel;
    case kAnswerYes: return kChoiceYes;
    case 8: return 8;
    default: return 0;
    }
}

void ShowLibError(std::int32_t code, const std::string& name) {
    const auto* const known = std::find_if(std::begin(kLibErrors), std::end(kLibErrors),
                                           [code](const LibError& error) { return error.code == code; });
    const std::string& title = frmUpdate.form.Caption();
    if (known == std::end(kLibErrors)) {
        ShowMsgBox(GetLocalText("Unknown Error", "991362"), kBoxCritical, title);
        return;
    }
    const std::string text = known->before.Text() + (known->named ? name : "") + known->after.Text();
    ShowMsgBox(text, kBoxExclamation, title);
}

} // namespace korlan
