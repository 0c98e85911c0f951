#include "platform/linux/desktop/HelpWindow.h"

#include "platform/TextEncoding.h"

#include <QAction>
#include <QBuffer>
#include <QHeaderView>
#include <QImageReader>
#include <QRegularExpression>
#include <QSignalBlocker>
#include <QSplitter>
#include <QStatusBar>
#include <QStringDecoder>
#include <QStyle>
#include <QTextDocument>
#include <QToolBar>
#include <QTreeWidget>

#include <algorithm>
#include <cstdint>

namespace korlan {
namespace {

constexpr qint64 kMostPixels = 16'000'000;
constexpr std::size_t kLargestPage = 1u << 20;
constexpr std::size_t kLargestStyleSheet = 1u << 16;
constexpr int kDeepestTables = 10;
constexpr int kDeepestElements = 1000;
const QString kNoPage = "<p>This page cannot be shown.</p>";
constexpr auto kTopicUrl = Qt::UserRole;

QString Text(const std::string& utf8) {
    return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

// UTF-8, else the character set the page names, else Windows-1252.
QString PageText(const std::string& bytes) {
    const QByteArrayView view(bytes.data(), static_cast<qsizetype>(bytes.size()));
    if (!IsValidUtf8(bytes)) {
        QStringDecoder decoder = QStringDecoder::decoderForHtml(view);
        const std::string_view name = decoder.isValid() ? decoder.name() : "";
        if (!name.empty() && name != "UTF-8" && name != "ISO-8859-1") return decoder(view);
    }
    return Text(TextFromBytes(bytes));
}

// Refuses what would keep the layout busy for minutes: tables in tables (each doubles the work), thousands of elements
// in one another, cells thousands of pixels apart.
bool CanBeLaidOut(const QString& html) {
    static const QRegularExpression kGiantCells("cell(padding|spacing)\\s*=\\s*[\"']?\\s*[0-9]{4}",
                                                QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression kTag("<(/?)([a-z][a-z0-9]*)", QRegularExpression::CaseInsensitiveOption);
    static const QStringList kNeedNoEnd = {"p", "li", "td", "th", "tr", "dt", "dd", "br", "hr", "img", "meta", "link"};
    int tables = 0, elements = 0;
    for (auto tag = kTag.globalMatch(html); tag.hasNext();) {
        const QRegularExpressionMatch one = tag.next();
        const QString name = one.captured(2).toLower();
        const int step = one.capturedLength(1) == 0 ? 1 : -1;
        if (name == "table") tables = std::max(0, tables + step);
        if (!kNeedNoEnd.contains(name)) elements = std::max(0, elements + step);
        if (tables > kDeepestTables || elements > kDeepestElements) return false;
    }
    return !kGiantCells.match(html).hasMatch();
}

// Never empty: for an empty picture the toolkit would look for a file of that name.
QImage Picture(const std::string* bytes) {
    static const QByteArrayList kFormats = {"png", "jpeg", "gif", "bmp", "ico"};
    QImage picture;
    if (bytes) {
        QByteArray data = QByteArray::fromRawData(bytes->data(), static_cast<qsizetype>(bytes->size()));
        QBuffer buffer(&data);
        QImageReader reader(&buffer);
        const QSize size = reader.size();
        if (kFormats.contains(reader.format()) && qint64{size.width()} * size.height() <= kMostPixels)
            picture = reader.read();
    }
    if (picture.isNull()) {
        picture = QImage(1, 1, QImage::Format_ARGB32);
        picture.fill(Qt::transparent);
    }
    return picture;
}

} // namespace

HelpPage::HelpPage(const CompiledHelp& help, QString fileName) : help_(help), fileName_(std::move(fileName)) {
    setObjectName("page");
    setOpenLinks(false);
    setOpenExternalLinks(false);
    setFrameShape(QFrame::NoFrame);
    document()->setDocumentMargin(14);
}

QUrl HelpPage::UrlOf(const QString& pathWithAnchor) const {
    const QUrl url = Inside(QUrl(pathWithAnchor));
    return Object(url) ? url : QUrl();
}

bool HelpPage::Go(const QUrl& url) {
    const QUrl inside = Inside(url);
    if (!Object(inside)) return false;
    setSource(inside, QTextDocument::HtmlResource);
    return true;
}

// Links within the file are relative to the page, or name a help file before "::". Only our own file's are followed.
QUrl HelpPage::Inside(const QUrl& link) const {
    QUrl url = base_.resolved(link);
    const QString scheme = url.scheme();
    if (scheme == "ms-its" || scheme == "its" || scheme == "mk") {
        const QString path = url.path();
        const qsizetype split = path.indexOf("::");
        const QString file = split < 0 ? QString() : path.left(split).section(QRegularExpression("[\\\\/:]"), -1);
        if (file.compare(fileName_, Qt::CaseInsensitive) != 0) return {};
        const QString fragment = url.fragment();
        url = QUrl("help:/");
        url.setPath("/" + path.sliced(split + 2).remove(QRegularExpression("^/+")));
        if (!fragment.isEmpty()) url.setFragment(fragment);
    }
    url.setQuery(QString());
    return url.scheme() == "help" && url.authority().isEmpty() ? url : QUrl();
}

const std::string* HelpPage::Object(const QUrl& inside) const {
    return inside.isEmpty() ? nullptr : help_.Find(inside.path().toStdString());
}

QVariant HelpPage::loadResource(int type, const QUrl& name) {
    const QUrl inside = Inside(name);
    const std::string* bytes = Object(inside);
    if (type == QTextDocument::HtmlResource) base_ = inside; // source() is still the page before
    if (type == QTextDocument::ImageResource) return Picture(bytes);
    const bool isPage = type == QTextDocument::HtmlResource;
    if (!bytes || bytes->size() > (isPage ? kLargestPage : kLargestStyleSheet)) return isPage ? kNoPage : QString();
    const QString text = PageText(*bytes);
    return isPage && !CanBeLaidOut(text) ? kNoPage : text;
}

HelpWindow::HelpWindow(CompiledHelp help, const QString& fileName)
    : help_(std::move(help)), contents_(new QTreeWidget), page_(new HelpPage(help_, fileName)) {
    setAttribute(Qt::WA_DeleteOnClose);
    setAttribute(Qt::WA_QuitOnClose, false);
    setWindowTitle(help_.title.empty() ? fileName : Text(help_.title));
    FillContents();
    MakeToolBar();
    auto* split = new QSplitter;
    split->addWidget(contents_);
    split->addWidget(page_);
    split->setStretchFactor(1, 1);
    split->setSizes({250, 650});
    split->setChildrenCollapsible(false);
    setCentralWidget(split);
    statusBar()->hide();
    resize(900, 620);

    connect(contents_, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* item) {
        if (item) page_->Go(item->data(0, kTopicUrl).toUrl());
    });
    connect(page_, &QTextBrowser::anchorClicked, this, [this](const QUrl& link) {
        if (page_->Go(link)) return;
        statusBar()->show();
        statusBar()->showMessage(tr("This link leads out of the help: %1").arg(link.toDisplayString()));
    });
    connect(page_, &QTextBrowser::sourceChanged, this, [this](const QUrl& page) {
        statusBar()->hide();
        page_->setAccessibleName(page_->documentTitle().isEmpty() ? windowTitle() : page_->documentTitle());
        SelectTopicOf(page);
    });
}

void HelpWindow::ShowFirstPage() {
    page_->Go(page_->UrlOf(Text(help_.defaultPage)));
}

void HelpWindow::FillContents() {
    contents_->setObjectName("contents");
    contents_->setAccessibleName(tr("Contents"));
    contents_->setHeaderHidden(true);
    contents_->setFrameShape(QFrame::NoFrame);
    contents_->setStyleSheet("QTreeView::item { padding: 3px 2px; }");
    contents_->setHidden(help_.topics.empty());
    std::vector<QTreeWidgetItem*> open; // the last item of each depth
    for (const HelpTopic& topic : help_.topics) {
        open.resize(std::min(open.size(), static_cast<std::size_t>(topic.depth)));
        auto* item = open.empty() ? new QTreeWidgetItem(contents_) : new QTreeWidgetItem(open.back());
        open.push_back(item);
        item->setText(0, Text(topic.title));
        const QUrl url = topic.page.empty() ? QUrl() : page_->UrlOf(Text(topic.page));
        item->setData(0, kTopicUrl, url);
        QTreeWidgetItem* other = items_.value(url); // a heading often shows the page of its first topic
        if (!url.isEmpty() && (!other || other == item->parent())) items_.insert(url, item);
    }
    for (int i = 0; i < contents_->topLevelItemCount(); ++i) contents_->topLevelItem(i)->setExpanded(true);
}

void HelpWindow::MakeToolBar() {
    auto* bar = addToolBar(tr("Navigation"));
    bar->setMovable(false);
    bar->setContextMenuPolicy(Qt::PreventContextMenu);
    bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    QAction* back = bar->addAction(style()->standardIcon(QStyle::SP_ArrowBack), tr("Back"), page_, &HelpPage::backward);
    QAction* forward =
        bar->addAction(style()->standardIcon(QStyle::SP_ArrowForward), tr("Forward"), page_, &HelpPage::forward);
    QAction* home =
        bar->addAction(style()->standardIcon(QStyle::SP_DirHomeIcon), tr("Home"), this, [this] { ShowFirstPage(); });
    back->setShortcut(QKeySequence::Back);
    forward->setShortcut(QKeySequence::Forward);
    home->setShortcut(QKeySequence(Qt::ALT | Qt::Key_Home));
    back->setEnabled(false);
    forward->setEnabled(false);
    connect(page_, &QTextBrowser::backwardAvailable, back, &QAction::setEnabled);
    connect(page_, &QTextBrowser::forwardAvailable, forward, &QAction::setEnabled);
}

// The contents show where the page belongs, however it was reached.
void HelpWindow::SelectTopicOf(const QUrl& page) {
    if (contents_->currentItem() && contents_->currentItem()->data(0, kTopicUrl).toUrl() == page) return;
    QTreeWidgetItem* item = items_.value(page);
    if (!item) item = items_.value(page.adjusted(QUrl::RemoveFragment));
    const QSignalBlocker quiet(contents_);
    contents_->setCurrentItem(item);
}

} // namespace korlan
