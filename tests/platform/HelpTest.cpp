// The help window on the manual of the sample, on damaged copies of it and on hostile pages.
#include "platform/Help.h"
#include "TestData.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>

#ifndef _WIN32
#include "platform/linux/desktop/CompiledHelp.h"
#include "platform/linux/desktop/HelpWindow.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPointer>
#include <QStatusBar>
#include <QTreeWidget>
#endif

#include <fstream>
#include <random>

namespace korlan {
namespace {

using namespace test;
using testing::HasSubstr;

std::string ManualBytes() {
    std::ifstream file(KLN_TEST_DATA "/../../sample/help/KlnUpdt.chm", std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

#ifdef _WIN32
BOOL CALLBACK TakeVisible(HWND window, LPARAM windows) {
    if (IsWindowVisible(window)) reinterpret_cast<std::vector<HWND>*>(windows)->push_back(window);
    return TRUE;
}

class Help : public testing::Test {
protected:
    void TearDown() override { OpenCompiledHelp("", HelpCommand::CloseAll, 0); }

    static std::vector<HWND> Open(const std::string& path) {
        OpenCompiledHelp(path, HelpCommand::DisplayTopic, 0);
        std::vector<HWND> windows;
        EnumThreadWindows(GetCurrentThreadId(), TakeVisible, reinterpret_cast<LPARAM>(&windows));
        return windows;
    }

    TempDrive drive;
};
#else
std::string TextOf(QWidget& window) {
    return window.findChild<QTextBrowser*>("page")->toPlainText().toStdString();
}

std::string PageOf(QWidget& window) {
    return window.findChild<QTextBrowser*>("page")->source().toString().toStdString();
}

class Help : public testing::Test {
protected:
    // The toolkit without a screen. It stays until the process ends.
    static void SetUpTestSuite() {
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
        static int count = 1;
        static char name[] = "HelpTest", *arguments[] = {name, nullptr};
        static QApplication* application = new QApplication(count, arguments);
        application->setQuitOnLastWindowClosed(false);
    }
    void TearDown() override { OpenCompiledHelp("", HelpCommand::CloseAll, 0); }

    static std::vector<QPointer<QWidget>> Windows() {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        std::vector<QPointer<QWidget>> windows;
        for (QWidget* widget : QApplication::topLevelWidgets())
            if (widget->findChild<HelpPage*>() && widget->isVisible()) windows.emplace_back(widget);
        return windows;
    }
    static std::vector<QPointer<QWidget>> Open(const std::string& path) {
        OpenCompiledHelp(path, HelpCommand::DisplayTopic, 0);
        return Windows();
    }

    TempDrive drive;
};
#endif

TEST_F(Help, WhatIsMissingOrNoHelpOpensNothing) {
    drive.Write("text.chm", "not a help file at all");
    drive.Write("head.chm", ManualBytes().substr(0, 0x60));
    for (const char* file : {R"(C:\none.chm)", R"(C:\text.chm)", R"(C:\head.chm)", R"(Q:\KlnUpdt.chm)", ""})
        EXPECT_TRUE(Open(file).empty()) << file;
}

#ifndef _WIN32 // the pages are shown by the system there
// A window of a file with these objects; it shows sub/a.htm.
struct PageWindow : HelpWindow {
    explicit PageWindow(std::map<std::string, std::string> objects)
        : HelpWindow({"", "sub/a.htm", {}, std::move(objects)}, "Me.chm") {
        ShowFirstPage();
    }
};

TEST_F(Help, ShowsContentsAndFirstPageOnceHoweverOftenItIsOpened) {
    drive.Write("Korlan/KLNUPDT.CHM", ManualBytes());
    const auto windows = Open(R"(c:\korlan\KlnUpdt.chm)");
    ASSERT_EQ(windows.size(), 1u);
    auto* tree = windows[0]->findChild<QTreeWidget*>("contents");
    EXPECT_EQ(tree->topLevelItem(1)->child(1)->text(0), "Running the update");
    EXPECT_THAT(TextOf(*windows[0]), HasSubstr("keeps your Korlan installation current"));
    EXPECT_EQ(tree->currentItem(), tree->topLevelItem(0));
    const auto* page = windows[0]->findChild<QTextBrowser*>("page");
    EXPECT_TRUE(!tree->accessibleName().isEmpty() && !page->accessibleName().isEmpty());

    EXPECT_EQ(Open(R"(C:\Korlan\KLNUPDT.chm)"), windows);
    OpenCompiledHelp("", HelpCommand::CloseAll, 0);
    EXPECT_TRUE(windows[0].isNull());
}

TEST_F(Help, FollowsLinksTheContentsAndItsOwnHistory) {
    drive.Write("KlnUpdt.chm", ManualBytes());
    const auto windows = Open(R"(C:\KlnUpdt.chm)");
    auto* page = windows[0]->findChild<QTextBrowser*>();
    auto* tree = windows[0]->findChild<QTreeWidget*>();
    const auto shown = [&] { return PageOf(*windows[0]) + " " + tree->currentItem()->text(0).toStdString(); };
    for (const int key : {Qt::Key_Tab, Qt::Key_Return}) { // the first link of the page
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
        QCoreApplication::sendEvent(page, &press);
    }
    EXPECT_EQ(shown(), "help:/choosing.htm Choosing files");
    tree->setCurrentItem(tree->topLevelItem(3)->child(4));
    EXPECT_EQ(shown(), "help:/messages.htm#quit Updation in progress");
    page->backward();
    EXPECT_EQ(shown(), "help:/choosing.htm Choosing files");
}

TEST_F(Help, LinksLeadToPagesOfTheFileOnly) {
    PageWindow window({{"sub/a.htm", "start"}, {"sub/b.htm", "b"}, {"sub/b c.htm", "c"}, {"top.htm", "t"}});
    const auto follow = [&](const char* link) {
        window.ShowFirstPage();
        emit window.findChild<QTextBrowser*>()->anchorClicked(QUrl(link));
        return PageOf(window) + (window.statusBar()->isHidden() ? "" : " and a note");
    };
    EXPECT_EQ(follow("b.htm?query"), "help:/sub/b.htm");
    EXPECT_EQ(follow("b%20c.htm"), "help:/sub/b c.htm");
    EXPECT_EQ(follow("../top.htm#x"), "help:/top.htm#x");
    EXPECT_EQ(follow(R"(mk:@MSITStore:C:\Korlan\me.chm::/top.htm)"), "help:/top.htm");
    for (const char* link : {"ms-its:other.chm::/top.htm", "missing.htm", "javascript:alert(1)",
                             "http://127.0.0.1:9/top.htm", "file:///etc/passwd", "../../../../etc/passwd"})
        EXPECT_EQ(follow(link), "help:/sub/a.htm and a note") << link;
}

// Every page must come up within a moment; what would not is replaced by a note.
TEST_F(Help, PagesOfEveryEncodingAndHostileOnes) {
    const auto times = [](int count, const std::string& text) {
        return QString::fromStdString(text).repeated(count).toStdString() + "text";
    };
    const std::pair<std::string, std::string> cases[] = {
        {"L\xC3\xB6t", "L\xC3\xB6t"},
        {"L\xF6t \x80", "L\xC3\xB6t \xE2\x82\xAC"},
        {"<meta http-equiv=Content-Type content='text/html; charset=iso-8859-1'>\x93L\xF6t", "\xE2\x80\x9CL\xC3\xB6t"},
        {std::string("\xFF\xFEL\0\xF6\0t\0", 8), "L\xC3\xB6t"},
        {times(12, "<Table><tr><td>"), "cannot be shown"},
        {times(40000, "<b>"), "cannot be shown"},
        {"<table cellpadding = '2000000000'><tr><td>text</table>", "cannot be shown"},
        {"text" + std::string(2 << 20, ' '), "cannot be shown"},
        {"<head><link rel=stylesheet href='file:///dev/zero'></head><body>text", "text"},
        {"text<img src='broken.png'>", "text"},
    };
    for (const auto& [page, shown] : cases) {
        PageWindow window({{"sub/a.htm", page}, {"sub/broken.png", "\x89PNG\r\n\x1a\n\0\0\0\rIHDR"}});
        window.grab(); // lays it out and paints it
        EXPECT_THAT(TextOf(window), HasSubstr(shown)) << page.substr(0, 60);
    }
}

// Most of the changes fall on the two places that say how the file is built: its head, and the tables of the
// compression. A copy either opens with a page or does not open.
TEST_F(Help, DamagedCopiesOpenOrDoNot) {
    const std::string good = ManualBytes();
    const std::size_t tables = good.find("LZXC") - 4;
    ASSERT_LT(tables, good.size());
    int opened = 0, refused = 0;
    for (unsigned seed = 0; seed < 400; ++seed) {
        std::mt19937 random(seed);
        std::string bytes = good;
        for (unsigned left = 1 + random() % 8; left > 0; --left) {
            const std::size_t places[] = {random() % 0xD0, tables + random() % 120, random() % bytes.size()};
            const char values[] = {'\xFF', '\0', static_cast<char>(random())};
            bytes[places[random() % 3]] = values[random() % 3];
        }
        if (seed % 5 == 0) bytes.resize(random() % bytes.size());
        drive.Write("damaged.chm", bytes);
        const std::optional<CompiledHelp> help = ReadCompiledHelp(drive.HostPathOf("damaged.chm"));
        ++(help ? opened : refused);
        if (!help) continue;
        EXPECT_TRUE(help->Find(help->defaultPage)) << seed;
        HelpWindow window(*help, "damaged.chm");
        window.ShowFirstPage();
        EXPECT_EQ(PageOf(window), "help:/" + help->defaultPage) << seed;
    }
    EXPECT_GT(opened, 50);
    EXPECT_GT(refused, 50);
}
#endif

} // namespace
} // namespace korlan
