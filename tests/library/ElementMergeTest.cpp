#include "library/ElementMerge.h"

#include "tests/support/Failing.h"
#include "tests/support/Installation.h"

namespace korlan::test {

namespace {

using testing::ElementsAre;

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
    MakeIndex();
    using Bodies = std::vector<std::string>;
    const std::tuple<std::int32_t, Bodies, std::string> cases[] = {
        // ... and the element of the last message
        {kAnswerYes, {"B=new B", "Z=old Z", "A=new A", "C=new C"}, "C"},
        {kAnswerNo, {"b=old b", "Z=old Z", "A=new A", "C=new C"}, "C"},
        {kAnswerCancel, {"b=old b", "Z=old Z", "A=new A"}, "A"},
    };
    for (const KindCase& kind : kKindCases) {
        for (const auto& [answer, bodies, last] : cases) {
            SCOPED_TRACE(std::string(kind.extension) + " " + std::to_string(answer));
            WriteBoth(kind);
            Desktop().answers = {answer};
            SaveToLib(source, target);
            EXPECT_EQ(TargetBodies(), bodies);
            EXPECT_THAT(Desktop().boxes,
                        ElementsAre(ShownBox{kind.question + target + "\nOverwrite anyway ?", 40, "Update"}));
            EXPECT_EQ(frmUpdate.lblMsgline.Caption(), kind.word + last + " from " + source + " to " + target);
        }
    }
    EXPECT_THAT(Index("SELECT Name, Library, FullName, SSQNum FROM PartFields"), // parts alone
                ElementsAre("A|OLD.PART|one|1", "B|OLD.PART|one|1", "C|OLD.PART|one|1"));
}

TEST_F(ElementMergeTest, FailingStepsAreReported) {
    const std::string none = "Source library not found : ", closed = "Can't open library: ";
    for (const KindCase& kind : kKindCases) {
        SCOPED_TRACE(kind.extension);
        const std::string what = kind.kind == 1 ? "Part: " : "Symbol/Package: ";
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
        ASSERT_EQ(Desktop().boxes.size(), 3u) << "each element has its own";
        EXPECT_EQ(Desktop().boxes[2], (ShownBox{"Can't save " + what + "C in lib: " + target, 48, kTitle}));
        EXPECT_THAT(TargetBodies(), ElementsAre("b=old b", "Z=old Z"));
        std::filesystem::remove(drive.HostPathOf(target + ".new"));

        WriteBoth(kind);
        Desktop().answers = {kAnswerNo};
        Desktop().onControlChanged = [&](const Control& control, Aspect, std::int32_t) { // between two elements
            if (&control != &frmUpdate.lblMsgline) return;
            WriteLibrary(source, static_cast<suite::Kind>(kind.kind), {{"A", "", ""}});
        };
        SaveToLib(source, target);
        Desktop().onControlChanged = nullptr;
        EXPECT_EQ(Desktop().boxes.back().text, "Can't find " + what + "C");
    }
}

TEST_F(ElementMergeTest, NothingToMerge) {
    WriteBoth(kKindCases[0]);
    for (const std::int32_t kind : {0, 5}) {
        korlan::Run.LibElementKind = kind;
        SaveToLib(source, target);
        EXPECT_THAT(TargetBodies(), ElementsAre("b=old b", "Z=old Z"));
    }
    EXPECT_THAT(Desktop().boxes, testing::IsEmpty());
}

TEST_F(ElementMergeTest, AnswersAndErrorTexts) {
    const std::pair<std::int32_t, std::int32_t> answers[] = {
        {kAnswerCancel, 1}, {kAnswerYes, -1}, {kAnswerNo, 0}, {8, 8}, {kAnswerOk, 0}};
    for (const auto& [answer, choice] : answers) EXPECT_EQ(OverwriteChoice(answer), choice) << answer;
    const std::tuple<std::int32_t, const char*, std::int32_t> errors[] = {
        {1, "Symbol/Package: X is not used in any part", 48},
        {2, "Can't quit at this time", 48}, // without the name
        {17, "Part with name: X already loaded", 48},
        {200, "Library File: X not found", 48},
        {3, "Unknown Error", 16},
    };
    for (const auto& [code, text, style] : errors) {
        Desktop().boxes.clear();
        ShowLibError(code, "X");
        EXPECT_THAT(Desktop().boxes, ElementsAre(ShownBox{text, style, kTitle})) << code;
    }
}

} // namespace korlan::test
