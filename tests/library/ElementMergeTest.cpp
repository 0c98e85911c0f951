#include "library/ElementMerge.h"

#include "tests/support/Installation.h"

namespace korlan::test {

namespace {

using testing::ElementsAre;

constexpr const char* kSource = "C:\\KORLAN\\Temp\\NEW";
constexpr const char* kTarget = "C:\\KORLAN\\LIB\\OLD";
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
        Flags.LibElementKind = kind.kind;
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
    using Bodies = std::vector<std::string>;
    MakeIndex();
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
            const auto merged =
                std::ranges::count_if(bodies, [](const auto& body) { return body.find("=new") != body.npos; });
            EXPECT_EQ(Index("DELETE FROM PartFields RETURNING Name").size(), kind.kind == kPartKind ? merged : 0);
            EXPECT_THAT(Desktop().boxes,
                        ElementsAre(ShownBox{kind.question + target + "\nOverwrite anyway ?", 40, "Update"}));
            EXPECT_EQ(frmUpdate.lblMsgline.Caption(), kind.word + last + " from " + source + " to " + target);
        }
    }
}

TEST_F(ElementMergeTest, FailingStepsAreReported) {
    const std::string none = "Source library not found : ", closed = "Can't open library: ";
    for (const KindCase& kind : kKindCases) {
        SCOPED_TRACE(kind.extension);
        const std::string what = kind.kind == 1 ? "Part: " : "Symbol/Package: ";
        WriteBoth(kind);
        std::filesystem::remove(drive.HostPathOf(source));
        SaveToLib(source, target);
        SaveToLib("Q:\\away" + source, target);
        EXPECT_THAT(Desktop().boxes,
                    ElementsAre(ShownBox{none + source, 48, kTitle}, ShownBox{none + "Q:\\away" + source, 48, kTitle}));

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
    }
}

TEST_F(ElementMergeTest, EachCodeOfTheSuiteHasItsText) {
    std::string codes, withoutName;
    for (std::int32_t code = -1; code <= 301; ++code) {
        Desktop().boxes.clear();
        ShowLibError(code, "<NAND>");
        const ShownBox unknown{"Unknown Error", kBoxCritical, kTitle}, &shown = Desktop().boxes.at(0);
        if (shown == unknown) continue;
        codes += std::to_string(code) + " ";
        if (shown.text.find("<NAND>") == std::string::npos) withoutName += std::to_string(code) + " ";
        EXPECT_EQ(shown.style, kBoxExclamation);
    }
    EXPECT_EQ(codes, "1 2 5 6 7 8 10 13 14 15 17 18 19 20 21 70 76 77 78 79 80 120 122 200 300 ");
    EXPECT_EQ(withoutName, "2 8 70 76 120 122 300 ");
}

} // namespace korlan::test
