#include "library/ElementMerge.h"

#include "app/TextHelpers.h"
#include "app/frmUpdate.h"
#include "app/localise/LocalText.h"
#include "library/PartDatabase.h"
#include "library/SearchSequence.h"
#include "library/SuiteText.h"
#include "platform/MsgBox.h"
#include "platform/RuntimeError.h"

#include <algorithm>
#include <iterator>

namespace korlan {

LibraryElements Elements;

namespace {

constexpr std::int32_t kOverwriteStyle = 40; // kept
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
    return {kSymbolLibraryType, alreadyStored, word, 6, 5, 19, 10, S_Symbol, DB_SymbMap, S_LoadSymbol, S_SaveSymbol};
}

// Padstacks have no question of their own; they ask as packages.
constexpr ElementKind kKinds[] = {
    {kPartLibraryType,
     {" Part is already stored in lib:", "991483"},
     {"Part ", "5828"},
     13,
     15,
     17,
     20,
     D_Device,
     DB_DeviceMap,
     D_LoadDevice,
     D_SaveDevice},
    SymbolLike({" Symbol is already stored in lib:", "991882"}, {"Symbol ", "4467"}),
    SymbolLike({" Package is already stored in lib:", "991482"}, {" Package ", "991884"}),
    SymbolLike({" Package is already stored in lib:", "991482"}, {" Padstack ", "991883"}),
};

struct LibError {
    std::int32_t code;
    LocalWord before;
    bool named; // the name stands behind `before`
    LocalWord after;
};

constexpr LocalWord kNothing{nullptr, nullptr};
constexpr LocalWord kAlreadyLoaded{" already loaded", "99197"};
constexpr LocalWord kFromDiskLibrary{" from disk library", "99708"};
constexpr LibError kLibErrors[] = {
    {1, {"Symbol/Package: ", "991282"}, true, {" is not used in any part", "99788"}},
    {2, {"Can't quit at this time", "99362"}, false, kNothing},
    {5, {"Can't load Symbol/Package: ", "99357"}, true, kNothing},
    {6, {"Can't find Symbol/Package: ", "99350"}, true, kNothing},
    {7, {"Symbol/Package with name: ", "991280"}, true, kAlreadyLoaded},
    {8, {"Can't Read Browser Profile", "99394"}, false, kNothing},
    {10, {"Can't save Symbol/Package: ", "99380"}, true, kNothing},
    {13, {"Can't find Part: ", "99345"}, true, kNothing},
    {14, {"Can't read Part: ", "99364"}, true, kNothing},
    {15, {"Can't load Part: ", "99353"}, true, kNothing},
    {17, {"Part with name: ", "99558"}, true, kAlreadyLoaded},
    {18, {"Can't delete Part: ", "99338"}, true, kFromDiskLibrary},
    {19, {"Can't rename Symbol/Package: ", "99360"}, true, kNothing},
    {20, {"Can't save Part: ", "99375"}, true, kNothing},
    {21, {"Can't delete Symbol/Package: ", "99342"}, true, kFromDiskLibrary},
    {70, {"No Part File selected", "99940"}, false, kNothing},
    {76, {"Can't create temporary Padstack", "99328"}, false, kNothing},
    {77, {"Can't find Symbol in the search sequence: ", "5094"}, true, kNothing},
    {78, {"Can't find Package in the search sequence: ", "5095"}, true, kNothing},
    {79, {"Can't find Padstack in the search sequence: ", "5096"}, true, kNothing},
    {kLibraryNotOpened, {"Can't open library: ", "99361"}, true, kNothing},
    {120, {"Element Template File Invalid.", "99648"}, false, kNothing},
    {122, {"Model Template File Invalid.", "99899"}, false, kNothing},
    {200, {"Library File: ", "3341"}, true, {" not found", "99962"}},
    {300, {"Library Browser Options Error ", "5060"}, false, kNothing},
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
    const OpenedLibrary library(libraryPath, Right(libraryPath, 5) == ".PART" ? kPartLibraryType : kSymbolLibraryType);
    Elements.library = library.Handle();
    if (!library.IsOpen()) return;
    for (std::string name; !(name = SuiteText(E_GetLibDirName())).empty();) Elements.names.Append(name);
}

void SaveToLib(const std::string& sourceLibrary, const std::string& targetLibrary) {
    if (Run.LibElementKind < kPartKind || Run.LibElementKind > kPadstackKind) return;
    Merge merge{kKinds[Run.LibElementKind - 1], sourceLibrary, targetLibrary};
    try {
        FillItemsList(sourceLibrary);
    } catch (const RuntimeError&) { // without the suite's library there is nothing to merge
        return;
    }
    if (Elements.library <= 0) merge.EndWithSource();
    for (std::int32_t i = 1; i <= Elements.names.UpperBound() && !merge.ended; ++i) {
        try {
            merge.MergeElement(Elements.names[i]);
        } catch (const RuntimeError&) { // the next element may fare better
        }
    }
}

std::int32_t OverwriteChoice(std::int32_t boxAnswer) {
    switch (boxAnswer) {
    case kAnswerCancel: return kChoiceCancel;
    case kAnswerYes: return kChoiceYes;
    case kAnswerNo: return 0;
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
