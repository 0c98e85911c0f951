#include "platform/Help.h"

#include "platform/RuntimeError.h"
#include "platform/linux/HostPath.h"
#include "platform/linux/desktop/HelpWindow.h"

#include <QApplication>
#include <QPointer>

#include <map>

namespace korlan {
namespace {

std::map<std::string, QPointer<HelpWindow>> windows; // by host path; null once its user has closed it

HelpWindow* Open(const std::string& hostPath) {
    if (HelpWindow* window = windows[hostPath]) return window;
    std::optional<CompiledHelp> help = ReadCompiledHelp(hostPath);
    if (!help) return nullptr;
    const std::string name = hostPath.substr(hostPath.rfind('/') + 1);
    return windows[hostPath] = new HelpWindow(std::move(*help), QString::fromStdString(name));
}

void CloseAll() {
    for (auto& [path, window] : windows) delete window;
    windows.clear();
}

} // namespace

void OpenCompiledHelp(const std::string& file, HelpCommand command, std::int32_t) {
    if (command == HelpCommand::CloseAll) return CloseAll();
    std::string hostPath;
    try {
        hostPath = HostPath(file);
    } catch (const RuntimeError&) {
        return; // a drive that is not there has no help
    }
    HelpWindow* window = Open(hostPath);
    if (!window) return;
    window->ShowFirstPage();
    window->setWindowState(window->windowState() & ~Qt::WindowMinimized);
    window->show();
    window->raise();
    window->activateWindow();
}

} // namespace korlan
