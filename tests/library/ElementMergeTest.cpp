#include "library/ElementMerge.h"

#include "tests/support/Failing.h"
#include "tests/support/Installation.h"

namespace korlan::test {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kSource = "C:\\Korlan\\Temp\\NEW";
constexpr const char* kTarget = "C:\\Korlan\\LIB\\OLD";
constexpr const char* kTitle = "Korlan Live Update";

struct KindCase {
    std::int32_t kind;
    const char* extension;
    const char* question; // up to the library
    const char* word;
};
constexpr KindCase kKindCases[] = {
    {1, ".PART", " Part is already stored in lib:", "Part "},
    {2, ".SYMBOL", " Symbol is already stored in lib:", "Symbol "},
    {3, ".PACKAGE", " Package is already stored in lib:", " Package "},
    {4, ".PADSTACK", " Package is already stored in lib:", " Padstack "},
};

class ElementMergeTest : public Installation {
protected:
    // Source with A, B and C, target with "b" and Z.
    void WriteBoth(const KindCase& kind) {
        korlan::Run.LibElementKind = kind.kind;
        source = std::string(kSource) + kind.extension;
        target = std::string(kTarget) + kind.extension;
        const auto fileKind = static_cast<suite::Kind>(kind.kind);
        const std::string text = kind.kind == 1 ? "P one|2|3|4|5|6|7|8|9|10" : "";
        WriteLibrary(source, fileKind, {{"A", text, "new A"}, {"B", text, "new B"}, {"C", text, "new C"}});
        WriteLibrary(target, fileKind, {{"b", "", "old b"}, {"Z", "", "old Z"}});
        Desktop().boxes.clear();
        Desktop().answers.clear();
    }
    std::vector<std::string> TargetBodies() const {
        std::vector<std::string> bodies;
        for (const suite::Element& element : suite::LoadLibrary(drive.HostPathOf(target)).elements)
            bodies.push_back(element.name + "=" + element.body);
        return bodies;
    }
    std::string source, target;
};

} // namespace

TEST_F(ElementMergeTest, MergesEveryKindAndAsksBeforeOverwriting) {
    for (const KindCase& kind : kKindCases) {
        SCOPED_TRACE(kind.extension);
        const struct {
            std::int32_t answer;
            std::vector<std::string> bodies;
            const char* last; // element of the last message
        } cases[] = {
            {kAnswerYes, {"B=new B", "Z=old Z", "A=new A", "C=new C"}, "C"},
            {kAnswerNo, {"b=old b", "Z=old Z", "A=new A", "C=new C"}, "C"},
            {8, {"b=old b", "Z=old Z", "A=new A", "C=new C"}, "C"},
            {kAnswerCancel, {"b=old b", "Z=old Z", "A=new A"}, "A"},
        };
        for (const auto& c : cases) {
            SCOPED_TRACE(c.answer);
            WriteBoth(kind);
            Desktop().answers = {c.answer};
            SaveToLib(source, target);
            EXPECT_EQ(TargetBodies(), c.bodies);
            EXPECT_THAT(Desktop().boxes,
                        ElementsAre(ShownBox{kind.question + target + "\nOverwrite anyway ?", 40, "Update"}));
            EXPECT_EQ(frmUpdate.lblMsgline.Caption(),
                      kind.word + std::string(c.last) + " from " + source + " to " + target);
        }
    }
}

TEST_F(ElementMergeTest, PartsRefreshTheIndex) {
    MakeIndex();
    for (const KindCase& kind : kKindCases) {
        WriteBoth(kind);
        Desktop().answers = {kAnswerNo};
        SaveToLib(source, target);
    }
    EXPECT_THAT(Index("SELECT Name, Library, FullName, SSQNum FROM PartFields"),
                ElementsAre("A|OLD.PART|one|1", "C|OLD.PART|one|1"));
}

TEST_F(ElementMergeTest, FailingStepsAreReported) {
    const std::string none = "Source library not found : ", closed = "Can't open library: ";
    for (const KindCase& kind : kKindCases) {
        SCOPED_TRACE(kind.extension);
        WriteBoth(kind);
        std::filesystem::remove(drive.HostPathOf(source));
        SaveToLib(source, target);
        EXPECT_THAT(Desktop().boxes, ElementsAre(ShownBox{none + source, 48, kTitle}));

        WriteBoth(kind);
        drive.Write(target, "torn");
        SaveToLib(source, target);
        EXPECT_THAT(Desktop().boxes, ElementsAre(ShownBox{closed + target, 48, kTitle})) << "one box, not three";

        WriteBoth(kind);
        Desktop().answers = {kAnswerOk, kAnswerNo};
        drive.MakeFolders(target + ".new"); // where the suite writes first
        SaveToLib(source, target);
        const std::string unsaved = kind.kind == 1 ? "Can't save Part: " : "Can't save Symbol/Package: ";
        ASSERT_EQ(Desktop().boxes.size(), 3u) << "each element has its own";
        EXPECT_EQ(Desktop().boxes[2], (ShownBox{unsaved + "C in lib: " + target, 48, kTitle}));
        EXPECT_THAT(TargetBodies(), ElementsAre("b=old b", "Z=old Z"));
    }
}

TEST_F(ElementMergeTest, ElementThatIsGone) {
    for (const KindCase& kind : kKindCases) {
        WriteBoth(kind);
        const suite::Kind fileKind = static_cast<suite::Kind>(kind.kind);
        Desktop().answers = {kAnswerNo};
        // The source changes between two elements.
        Desktop().onControlChanged = [&](const Control& control, Aspect, std::int32_t) {
            if (&control == &frmUpdate.lblMsgline) WriteLibrary(source, fileKind, {{"A", "", ""}});
        };
        SaveToLib(source, target);
        Desktop().onControlChanged = nullptr;
        EXPECT_EQ(Desktop().boxes.back().text, kind.kind == 1 ? "Can't find Part: C" : "Can't find Symbol/Package: C");
    }
}

TEST_F(ElementMergeTest, NothingToMerge) {
    for (const std::int32_t kind : {0, 5, -1}) {
        WriteBoth(kKindCases[0]);
        korlan::Run.LibElementKind = kind;
        SaveToLib(source, target);
        EXPECT_THAT(TargetBodies(), ElementsAre("b=old b", "Z=old Z"));
    }
    WriteBoth(kKindCases[0]);
    FillItemsList(source);
    EXPECT_THAT(std::vector<std::string>(Elements.names.begin(), Elements.names.end()), ElementsAre("A", "B", "C"));
    FillItemsList("C:\\Korlan\\Temp\\new.part"); // the same file, asked for as a symbol library
    EXPECT_LE(Elements.library, 0);
    EXPECT_EQ(Elements.names.UpperBound(), 0);
    EXPECT_THAT(Desktop().boxes, IsEmpty());
}

TEST_F(ElementMergeTest, AnswersAndErrorTexts) {
    const struct {
        std::int32_t answer, choice;
    } answers[] = {{kAnswerCancel, 1}, {kAnswerYes, -1}, {kAnswerNo, 0}, {8, 8}, {kAnswerOk, 0}, {3, 0}, {0, 0}};
    for (const auto& c : answers) EXPECT_EQ(OverwriteChoice(c.answer), c.choice) << c.answer;
    const struct {
        std::int32_t code;
        const char* text;
        std::int32_t style;
    } errors[] = {
        {1, "Symbol/Package: X is not used in any part", 48},
        {2, "Can't quit at this time", 48},
        {17, "Part with name: X already loaded", 48},
        {79, "Can't find Padstack in the search sequence: X", 48},
        {200, "Library File: X not found", 48},
        {300, "Library Browser Options Error ", 48},
        {3, "Unknown Error", 16},
        {-1, "Unknown Error", 16},
    };
    for (const auto& c : errors) {
        Desktop().boxes.clear();
        ShowLibError(c.code, "X");
        EXPECT_THAT(Desktop().boxes, ElementsAre(ShownBox{c.text, c.style, kTitle})) << c.code;
    }
}

} // namespace korlan::test
