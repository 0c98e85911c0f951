#include "library/SearchSequence.h"

#include "tests/support/Installation.h"

namespace korlan::test {

namespace {

class SearchSequenceTest : public Installation {};

const std::string kSeven =
    "1=A.PART\r\n2=B.PART\r\n3=\xC3\x9C.PART\r\n4=D.PART\r\n5=E.PART\r\n6=F.PART\r\n7=G.PART\r\n";

} // namespace

TEST_F(SearchSequenceTest, AddsWhatIsNotListed) {
    constexpr std::int32_t kAsked = -1; // GetSSQNum instead of UpdateLibSSQ
    // What, kind, name, the file before and after, position.
    const std::tuple<const char*, std::int32_t, std::string, std::string, std::string, std::int32_t> cases[] = {
        {"position 8 behind seven", kAsked, "New.Part",
         "[DEVLIBS]\r\n" + kSeven + "[KLN_DEVLIBS]\r\n1=A.PART,1\r\n2=B.PART,0\r\n",
         "[DEVLIBS]\r\n" + kSeven + "8=NEW.PART\r\n[KLN_DEVLIBS]\r\n1=A.PART,1\r\n2=B.PART,0\r\n3=NEW.PART,1\r\n", 8},
        {"only the case differs", kAsked, "\xC3\xBC.pArT", "[DEVLIBS]\r\n" + kSeven, "[DEVLIBS]\r\n" + kSeven, 3},
        {"no section", kAsked, "a.part", "[X]\r\n", "[X]\r\n[DEVLIBS]\r\n1=A.PART\r\n[KLN_DEVLIBS]\r\n1=A.PART,1\r\n",
         1},
        {"a gap ends the list", kAsked, "N.PART", "[DEVLIBS]\r\n1=A.PART\r\n2=\r\n3=C.PART\r\n",
         "[DEVLIBS]\r\n1=A.PART\r\n2=N.PART\r\n3=C.PART\r\n[KLN_DEVLIBS]\r\n1=N.PART,1\r\n", 2},
        {"listed without a flag", 4, "P.PADSTACK", "[PADLIBS]\r\n1=p.padstack\r\n", "[PADLIBS]\r\n1=p.padstack\r\n", 0},
        {"parts are not added so", 1, "A.PART", "[X]\r\n", "[X]\r\n", 0},
    };
    for (const auto& [what, kind, name, before, after, expected] : cases) {
        drive.Write(kIni, before);
        LoadSearchSequences();
        for (int time = 1; time <= 2; ++time) { // the second time changes nothing more
            std::int32_t position = 0;
            if (kind == kAsked)
                GetSSQNum(name, position);
            else
                UpdateLibSSQ(name, kind);
            EXPECT_EQ(position, expected) << what;
            EXPECT_EQ(drive.Read(kIni), after) << what;
        }
    }
}

TEST_F(SearchSequenceTest, LoadsFlags) {
    drive.Write(kIni, "[SCHLIBS]\r\n1=a.symbol\r\n"
                      "[KLN_DEVLIBS]\r\n1=A.PART,1\r\n2=B,C.PART, 0\r\n3=D.PART\r\n4=E.PART,-7\r\n");
    LoadSearchSequences();
    std::string flags;
    for (const LibraryFlag& entry : SequenceOf(kPartKind).flags)
        flags += entry.name + "=" + std::to_string(entry.flag) + ";";
    EXPECT_EQ(flags, "A.PART=1;B,C.PART=0;D.PART=0;E.PART=-7;");
}

} // namespace korlan::test
