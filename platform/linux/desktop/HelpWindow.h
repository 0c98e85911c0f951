// The window of one compiled help file: contents at the left, the page at the right. Nothing outside the file is ever
// read or opened from it.
#pragma once

#include "platform/linux/desktop/CompiledHelp.h"

#include <QHash>
#include <QMainWindow>
#include <QTextBrowser>
#include <QUrl>

class QTreeWidget;
class QTreeWidgetItem;

namespace korlan {

// Shows pages of the file under URLs "help:/path#anchor". A link that leaves the file is not followed.
class HelpPage : public QTextBrowser {
public:
    HelpPage(const CompiledHelp& help, QString fileName);

    // The URL of a path in the file, "#anchor" behind it where there is one; empty when there is no such page.
    QUrl UrlOf(const QString& pathWithAnchor) const;
    bool Go(const QUrl& url); // false when it leads out of the file, or to nothing in it

protected:
    QVariant loadResource(int type, const QUrl& name) override;

private:
    QUrl Inside(const QUrl& link) const; // where a link leads within the file, empty when it leads out
    const std::string* Object(const QUrl& inside) const;

    const CompiledHelp& help_;
    QUrl base_{"help:/"}; // the page shown, or being loaded
    QString fileName_;    // without folders, lower case: how a page names its own file
};

class HelpWindow : public QMainWindow {
public:
    HelpWindow(CompiledHelp help, const QString& fileName);
    void ShowFirstPage();

private:
    void FillContents();
    void MakeToolBar();
    void SelectTopicOf(const QUrl& page);

    CompiledHelp help_;
    QTreeWidget* contents_;
    HelpPage* page_;
    QHash<QUrl, QTreeWidgetItem*> items_;
};

} // namespace korlan
