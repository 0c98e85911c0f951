// The help window on the manual of the sample, on damaged copies of it and on hostile pages.
#include "platform/Help.h"
#include "platform/linux/desktop/CompiledHelp.h"
#include "platform/linux/desktop/HelpWindow.h"

#include "tests/support/TempFolder.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPointer>
#include <QStatusBar>
#include <QTextBlock>
#include <QTreeWidget>
#include <gmock/gmock.h>

#include <fstream>
#include <random>

namespace korlan {
namespace {

using namespace test;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

const std::string kManual = KLN_TEST_DATA "/../../sample/help/KlnUpdt.chm";

std::string ManualBytes() {
    std::ifstream file(kManual, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// The toolkit without a screen. It stays until the process ends.
class Help : public testing::Test {
protected:
    static void SetUpTestSuite() {
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
        static int count = 1;
        static char name[] = "HelpTest";
        static char* arguments[] = {name, nullptr};
        static QApplication* application = new QApplication(count, arguments);
        application->setQuitOnLastWindowClosed(false);
    }
    void TearDown() override { OpenCompiledHelp("", HelpCommand::CloseAll, 0); }

    static std::vector<QWidget*> Windows() {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        std::vector<QWidget*> windows;
        for (QWidget* widget : QApplication::topLevelWidgets())
            if (widget->findChild<HelpPage*>() && widget->isVisible()) windows.push_back(widget);
        return windows;
    }
    static std::string TextOf(QWidget* window) {
        return window->findChild<QTextBrowser*>("page")->toPlainText().toStdString();
    }
    static std::string PageOf(QWidget* window) {
        return window->findChild<QTextBrowser*>("page")->source().toString().toStdString();
    }
    static void Key(QWidget* widget, int key) {
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
        QCoreApplication::sendEvent(widget, &press);
    }
    static std::vector<std::string> Contents(QWidget* window) {
        std::vector<std::string> lines;
        const auto* tree = window->findChild<QTreeWidget*>("contents");
        for (int i = 0; i < tree->topLevelItemCount(); ++i) {
            lines.push_back(tree->topLevelItem(i)->text(0).toStdString());
            for (int k = 0; k < tree->topLevelItem(i)->childCount(); ++k)
                lines.push_back("  " + tree->topLevelItem(i)->child(k)->text(0).toStdString());
        }
        return lines;
    }

    TempDrive drive;
};

TEST_F(Help, ShowsContentsAndFirstPageOnceHoweverOftenItIsOpened) {
    drive.Write("Korlan/KLNUPDT.CHM", ManualBytes());
    OpenCompiledHelp(R"(c:\korlan\KlnUpdt.chm)", HelpCommand::DisplayTopic, 0);
    ASSERT_EQ(Windows().size(), 1u);
    QWidget* window = Windows()[0];
    EXPECT_FALSE(window->isModal());
    EXPECT_EQ(window->windowTitle(), "Korlan Live Update Help");
    EXPECT_THAT(Contents(window),
                ElementsAre("Korlan Live Update", "Updating", "  Choosing files", "  Running the update",
                            "  When a transfer fails", "Reminders", "Messages explained", "  Close Korlan first",
                            "  Connection error", "  No updates found", "  Live Update failed",
                            "  Updation in progress", "  Path not available"));
    EXPECT_THAT(TextOf(window), HasSubstr("keeps your Korlan installation current"));
    const auto* tree = window->findChild<QTreeWidget*>();
    EXPECT_EQ(tree->currentItem(), tree->topLevelItem(0));
    const QVariant picture = window->findChild<QTextBrowser*>()->document()->resource(QTextDocument::ImageResource,
                                                                                      QUrl("help:/update.png"));
    EXPECT_EQ(picture.value<QImage>().size(), QSize(48, 48));

    OpenCompiledHelp(R"(C:\Korlan\KLNUPDT.chm)", HelpCommand::DisplayTopic, 0);
    EXPECT_EQ(Windows().size(), 1u);
    QPointer<QWidget> closed = window;
    OpenCompiledHelp("", HelpCommand::CloseAll, 0);
    EXPECT_TRUE(closed.isNull());
    OpenCompiledHelp(R"(C:\Korlan\KLNUPDT.chm)", HelpCommand::DisplayTopic, 0);
    ASSERT_EQ(Windows().size(), 1u);
    Windows()[0]->close(); // by its user
    EXPECT_TRUE(Windows().empty());
    OpenCompiledHelp("", HelpCommand::CloseAll, 0);
}

TEST_F(Help, FollowsLinksTheContentsAndItsOwnHistory) {
    drive.Write("KlnUpdt.chm", ManualBytes());
    OpenCompiledHelp(R"(C:\KlnUpdt.chm)", HelpCommand::DisplayTopic, 0);
    ASSERT_EQ(Windows().size(), 1u);
    QWidget* window = Windows()[0];
    auto* page = window->findChild<QTextBrowser*>();
    auto* tree = window->findChild<QTreeWidget*>();
    Key(page, Qt::Key_Tab); // the first link of the page
    Key(page, Qt::Key_Return);
    EXPECT_EQ(PageOf(window), "help:/choosing.htm");
    EXPECT_THAT(TextOf(window), HasSubstr("Every file starts checked"));
    EXPECT_EQ(tree->currentItem()->text(0).toStdString(), "Choosing files");

    tree->setCurrentItem(tree->topLevelItem(1)); // a heading that shows the same page stays selected
    EXPECT_EQ(PageOf(window), "help:/choosing.htm");
    EXPECT_EQ(tree->currentItem(), tree->topLevelItem(1));
    tree->setCurrentItem(tree->topLevelItem(3)->child(4));
    EXPECT_EQ(PageOf(window), "help:/messages.htm#quit");
    emit page->anchorClicked(QUrl("ms-its:KlnUpdt.chm::/running.htm#cancel"));
    EXPECT_EQ(PageOf(window), "help:/running.htm#cancel");
    EXPECT_EQ(tree->currentItem()->text(0).toStdString(), "Running the update");
    page->backward();
    page->backward();
    EXPECT_EQ(PageOf(window), "help:/choosing.htm");
    page->forward();
    EXPECT_THAT(TextOf(window), HasSubstr("No updates found"));
    EXPECT_EQ(tree->currentItem()->text(0).toStdString(), "Updation in progress");
}

CompiledHelp Pages(std::map<std::string, std::string> objects) {
    CompiledHelp help;
    help.objects = std::move(objects);
    help.defaultPage = "sub/a.htm";
    return help;
}

TEST_F(Help, LinksLeadToPagesOfTheFileOnly) {
    const struct {
        const char* link;
        const char* page; // null: it is not followed
    } cases[] = {
        {"b.htm", "help:/sub/b.htm"},
        {"../top.htm#x", "help:/top.htm#x"},
        {"/TOP.HTM", "help:/TOP.HTM"},
        {"b%20c.htm", "help:/sub/b c.htm"},
        {"b.htm?query", "help:/sub/b.htm"},
        {"ms-its:me.chm::/top.htm", "help:/top.htm"},
        {"MS-ITS:ME.CHM::/sub/b.htm#y", "help:/sub/b.htm#y"},
        {R"(mk:@MSITStore:C:\Korlan\me.chm::/top.htm)", "help:/top.htm"},
        {"its:me.chm::///top.htm", "help:/top.htm"},
        {"ms-its:other.chm::/top.htm", nullptr},
        {"ms-its:top.htm", nullptr},
        {"missing.htm", nullptr},
        {"http://127.0.0.1:9/top.htm", nullptr},
        {"//127.0.0.1/top.htm", nullptr},
        {"file:///etc/passwd", nullptr},
        {"javascript:alert(1)", nullptr},
        {"mailto:a@b", nullptr},
        {"../../../../etc/passwd", nullptr},
        {"", nullptr},
    };
    HelpWindow window(Pages({{"sub/a.htm", "start"}, {"sub/b.htm", "b"}, {"sub/b c.htm", "c"}, {"top.htm", "t"}}),
                      "Me.chm");
    auto* page = window.findChild<QTextBrowser*>();
    for (const auto& one : cases) {
        window.ShowFirstPage();
        emit page->anchorClicked(QUrl(one.link));
        EXPECT_EQ(PageOf(&window), one.page ? one.page : "help:/sub/a.htm") << one.link;
        EXPECT_EQ(window.statusBar()->isHidden(), one.page != nullptr || !*one.link) << one.link;
    }
}

// Every page must come up within a moment; what would not is replaced by a note.
TEST_F(Help, HostilePagesAreHarmless) {
    const auto times = [](int count, const std::string& text) {
        std::string all;
        for (int i = 0; i < count; ++i) all += text;
        return all;
    };
    const std::string note = "This page cannot be shown.";
    const struct {
        const char* what;
        std::string page;
        bool shown;
    } cases[] = {
        {"tables in one another", times(9, "<table><tr><td>") + "text", true},
        {"too many of them", times(40, "<Table><tr><td>") + "text", false},
        {"many tables side by side", times(500, "<table><tr><td>x</td></tr></table>") + "text", true},
        {"elements in one another", times(40000, "<b>") + "text", false},
        {"paragraphs without an end", times(5000, "<p>") + "text", true},
        {"cells far apart", "<table cellpadding = '2000000000'><tr><td>text</table>", false},
        {"more than a page", "text" + std::string(2 << 20, ' '), false},
        {"no text at all", std::string(5000, '\0') + "text", true},
        {"a tag without an end", "text<img src=\"", true},
        {"a local style sheet", "<head><link rel=stylesheet href='file:///dev/zero'></head><body>text", true},
        {"a broken picture", "text<img src='broken.png'>", true},
    };
    for (const auto& one : cases) {
        HelpWindow window(Pages({{"sub/a.htm", one.page}, {"sub/broken.png", "\x89PNG\r\n\x1a\n\0\0\0\rIHDR"}}),
                          "me.chm");
        window.ShowFirstPage();
        window.grab(); // lays it out and paints it
        EXPECT_THAT(TextOf(&window), one.shown ? HasSubstr("text") : HasSubstr(note)) << one.what;
    }
}

TEST_F(Help, PicturesComeFromTheFileOnly) {
    QImage red(60, 60, QImage::Format_RGB32);
    red.fill(Qt::red);
    const std::string local = drive.HostPathOf("red.png");
    ASSERT_TRUE(red.save(QString::fromStdString(local)));
    const std::string bytes = drive.Read("red.png");
    const struct {
        std::string source;
        bool shown;
    } cases[] = {
        {"red.png", true}, {"/SUB/Red.png", true},     {"ms-its:me.chm::/sub/red.png", true},
        {local, false},    {"file://" + local, false}, {"../../../../../../" + local, false},
    };
    for (const auto& one : cases) {
        HelpWindow window(Pages({{"sub/a.htm", "<img src='" + one.source + "'>"}, {"sub/red.png", bytes}}), "me.chm");
        window.ShowFirstPage();
        const QImage seen = window.grab().toImage();
        int reds = 0;
        for (int y = 0; y < seen.height(); ++y)
            for (int x = 0; x < seen.width(); ++x) reds += seen.pixel(x, y) == qRgb(255, 0, 0);
        EXPECT_EQ(reds, one.shown ? 60 * 60 : 0) << one.source;
    }
}

TEST_F(Help, PagesOfEveryEncodingAreRead) {
    const struct {
        std::string page, text;
    } cases[] = {
        {"L\xC3\xB6t", "L\xC3\xB6t"},
        {"L\xF6t \x80", "L\xC3\xB6t \xE2\x82\xAC"},
        {"<meta charset=windows-1252>\x93L\xF6t\x94", "\xE2\x80\x9CL\xC3\xB6t\xE2\x80\x9D"},
        {"<meta http-equiv=Content-Type content='text/html; charset=iso-8859-1'>\x93L\xF6t", "\xE2\x80\x9CL\xC3\xB6t"},
        {"<meta charset=nonsense>L\xF6t", "L\xC3\xB6t"},
        {std::string("\xFF\xFEL\0\xF6\0t\0", 8), "L\xC3\xB6t"},
    };
    for (const auto& one : cases) {
        HelpWindow window(Pages({{"sub/a.htm", one.page}}), "me.chm");
        window.ShowFirstPage();
        EXPECT_EQ(TextOf(&window), one.text) << one.page;
    }
}

TEST_F(Help, WhatIsMissingOrNoHelpOpensNothing) {
    drive.MakeFolders("folder.chm");
    drive.Write("empty.chm", "");
    drive.Write("text.chm", "not a help file at all");
    drive.Write("head.chm", ManualBytes().substr(0, 0x60));
    for (const char* file : {R"(C:\none.chm)", R"(C:\folder.chm)", R"(C:\empty.chm)", R"(C:\text.chm)",
                             R"(C:\head.chm)", R"(Q:\KlnUpdt.chm)", ""}) {
        OpenCompiledHelp(file, HelpCommand::DisplayTopic, 0);
        EXPECT_TRUE(Windows().empty()) << file;
    }
}

// Half of the changes fall on the two places that say how the file is built: its head, and the tables of the
// compression. A copy either opens with a page or does not open.
TEST_F(Help, DamagedCopiesOpenOrDoNot) {
    const std::string good = ManualBytes();
    const std::size_t tables = good.find("LZXC") - 4;
    ASSERT_LT(tables, good.size());
    int opened = 0, refused = 0;
    for (unsigned seed = 0; seed < 400; ++seed) {
        std::mt19937 random(seed);
        std::string bytes = good;
        for (unsigned i = 0, changes = 1 + random() % 8; i < changes; ++i) {
            const std::size_t range = random() % 4;
            const std::size_t at = range == 0   ? random() % 0xD0
                                   : range == 1 ? tables + random() % 120
                                                : random() % bytes.size();
            bytes[at] = random() % 3 == 0 ? '\xFF' : random() % 3 == 0 ? '\0' : static_cast<char>(random());
        }
        if (seed % 5 == 0) bytes.resize(random() % bytes.size());
        drive.Write("damaged.chm", bytes);
        const std::optional<CompiledHelp> help = ReadCompiledHelp(drive.HostPathOf("damaged.chm"));
        ++(help ? opened : refused);
        if (!help) continue;
        EXPECT_TRUE(help->Find(help->defaultPage)) << seed;
        HelpWindow window(*help, "damaged.chm");
        window.ShowFirstPage();
        EXPECT_EQ(PageOf(&window), "help:/" + help->defaultPage) << seed;
    }
    EXPECT_GT(opened, 50);
    EXPECT_GT(refused, 50);
}

TEST(HelpContents, ReadsTopicsFromLooseHtml) {
    const auto topics = [](const std::string& html) {
        std::string text;
        for (const HelpTopic& topic : ParseHelpContents(html))
            text += std::to_string(topic.depth) + topic.title + "=" + topic.page + ";";
        return text;
    };
    const auto object = [](const std::string& name) {
        return "<OBJECT type=\"text/sitemap\"><param name=\"Name\" value=\"" + name + "\"></OBJECT>";
    };
    const struct {
        std::string html, topics;
    } cases[] = {
        {"", ""},
        {"<ul><li><object type='text/sitemap'><PARAM value=a.htm name='Local'><param NAME = Name VALUE = "
         "A></object></ul>",
         "0A=a.htm;"},
        {"<UL>" + object("a") + "<UL>" + object("b") + "</UL>" + object("c") + "</UL>", "0a=;1b=;0c=;"},
        {object("a") + "</ul></ul>" + object("b"), "0a=;0b=;"},
        {"<ul><ul><ul>" + object("a") + object("b") + "<ul>" + object("c"), "0a=;1b=;2c=;"},
        {"<ul>" + object("R&amp;D &lt;1&gt; &#233; &#x20AC; &nope; &#0; &#xD800; &") + "</ul>",
         "0R&D <1> \xC3\xA9 \xE2\x82\xAC &nope; &#0; &#xD800; &=;"},
        {"<ul>" + object("a > b") + object("") + "<object type='other'><param name=Name value=x></object>", "0a > b=;"},
        {"<object type='text/sitemap'><param name=Name value='first'><param name=Name value=second><param name=Local "
         "value=1.htm><param name=Local value=2.htm></object>",
         "0first=1.htm;"},
        {"<ul><object type='text/sitemap'><param name=\"Name value=a></object>", ""},
        {object("a") + "<", "0a=;"},
    };
    for (const auto& one : cases) EXPECT_EQ(topics(one.html), one.topics) << one.html;
}

} // namespace
} // namespace korlan
