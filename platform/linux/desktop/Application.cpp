#include "platform/linux/desktop/Application.h"

#include "platform/linux/desktop/Pictures.h"

#include <QApplication>
#include <QFont>

namespace korlan {

namespace {

int argumentCount = 1; // the application object keeps a reference to both
char programName[] = "KlnUpdt";
char* arguments[] = {programName, nullptr};

// Faces of Windows and what stands in for them, nearest first.
void SubstituteFaces() {
    const QStringList sans{"Liberation Sans", "Arimo", "DejaVu Sans", "Noto Sans"};
    for (const char* face : {"MS Sans Serif", "Arial", "System"}) QFont::insertSubstitutions(face, sans);
}

} // namespace

QApplication& TheApplication() {
    if (!QCoreApplication::instance()) {
        new QApplication(argumentCount, arguments); // lives as long as the process, whichever way that ends
        QApplication::setApplicationName("KlnUpdt");
    }
    static const bool prepared = [] {
        SubstituteFaces();
        QApplication::setQuitOnLastWindowClosed(false); // the form record decides, not the number of windows
        QApplication::setWindowIcon(ProgramIcon());
        return true;
    }();
    Q_UNUSED(prepared);
    return *static_cast<QApplication*>(QCoreApplication::instance());
}

} // namespace korlan
