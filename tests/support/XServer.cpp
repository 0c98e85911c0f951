#include "tests/support/XServer.h"

#include <sys/wait.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>

namespace korlan::test {

// Frees a reply of the server, which may be none.
template <class T>
static auto Own(T* reply) {
    return std::unique_ptr<T, decltype(&std::free)>(reply, &std::free);
}

ChildProcess::ChildProcess(std::vector<const char*> command) {
    command.push_back(nullptr);
    pid_ = fork();
    if (pid_ != 0) return;
    if (std::freopen("/dev/null", "w", stderr)) execvp(command[0], const_cast<char**>(command.data()));
    _exit(127);
}

void ChildProcess::End() {
    if (pid_ > 0) kill(pid_, SIGTERM);
    Wait();
}

std::optional<int> ChildProcess::ExitCode() {
    Reap(WNOHANG);
    return exitCode_;
}

void ChildProcess::Reap(int options) {
    int status = 0;
    if (pid_ <= 0 || waitpid(pid_, &status, options) != pid_) return;
    exitCode_ = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    pid_ = -1;
}

std::string XServer::OpenPipe() {
    if (pipe(ready_) != 0) throw std::runtime_error("no pipe");
    return std::to_string(ready_[1]);
}

XServer::XServer() {
    close(ready_[1]);
    std::string number;
    for (char byte = 0; read(ready_[0], &byte, 1) == 1 && byte != '\n';) number += byte;
    close(ready_[0]);
    setenv("DISPLAY", (":" + number).c_str(), 1); // without a number nobody connects
}

OtherProgram::OtherProgram() : connection_(xcb_connect(nullptr, nullptr)) {
    if (xcb_connection_has_error(connection_)) throw std::runtime_error("no connection to the X server");
    root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
}

xcb_atom_t OtherProgram::Atom(const std::string& name) const {
    const auto cookie = xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.c_str());
    return Own(xcb_intern_atom_reply(connection_, cookie, nullptr))->atom;
}

xcb_window_t OtherProgram::MakeWindow(const std::string& title, bool shown) const {
    const xcb_window_t window = xcb_generate_id(connection_);
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, root_, 10, 20, 200, 100, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    if (!title.empty()) SetProperty(window, "_NET_WM_NAME", "UTF8_STRING", title);
    if (shown) xcb_map_window(connection_, window);
    Sync();
    if (shown && !Eventually([&] { return Viewable(window); })) throw std::runtime_error("a window does not show");
    return window;
}

void OtherProgram::AskToClose(xcb_window_t window) const {
    const xcb_client_message_event_t event{
        XCB_CLIENT_MESSAGE, 32, 0, window, Atom("WM_PROTOCOLS"), {.data32 = {Atom("WM_DELETE_WINDOW")}}};
    xcb_send_event(connection_, 0, window, XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char*>(&event));
    Sync();
}

void OtherProgram::Destroy(xcb_window_t window) const {
    xcb_destroy_window(connection_, window);
    Sync();
}

void OtherProgram::SetProperty(xcb_window_t window, const std::string& name, const std::string& type,
                               const std::string& bytes, std::uint8_t bits) const {
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, Atom(name), Atom(type), bits,
                        static_cast<std::uint32_t>(bytes.size() * 8 / bits), bytes.data());
    Sync();
}

std::string OtherProgram::TextProperty(xcb_window_t window, const std::string& name) const {
    const auto cookie = xcb_get_property(connection_, 0, window, Atom(name), XCB_GET_PROPERTY_TYPE_ANY, 0, 4096);
    const auto reply = Own(xcb_get_property_reply(connection_, cookie, nullptr));
    if (!reply) return {};
    return {static_cast<const char*>(xcb_get_property_value(reply.get())),
            static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
}

std::vector<std::uint32_t> OtherProgram::NumberProperty(xcb_window_t window, const std::string& name) const {
    const std::string bytes = TextProperty(window, name);
    std::vector<std::uint32_t> numbers(bytes.size() / 4);
    bytes.copy(reinterpret_cast<char*>(numbers.data()), numbers.size() * 4);
    return numbers;
}

bool OtherProgram::Viewable(xcb_window_t window) const {
    const auto cookie = xcb_get_window_attributes(connection_, window);
    const auto reply = Own(xcb_get_window_attributes_reply(connection_, cookie, nullptr));
    return reply && reply->map_state == XCB_MAP_STATE_VIEWABLE;
}

xcb_window_t OtherProgram::Parent(xcb_window_t window) const {
    const auto reply = Own(xcb_query_tree_reply(connection_, xcb_query_tree(connection_, window), nullptr));
    return reply ? reply->parent : 0u;
}

std::vector<xcb_window_t> OtherProgram::TopDown() const {
    const auto reply = Own(xcb_query_tree_reply(connection_, xcb_query_tree(connection_, root_), nullptr));
    const xcb_window_t* first = xcb_query_tree_children(reply.get());
    std::vector<xcb_window_t> windows(first, first + xcb_query_tree_children_length(reply.get()));
    return {windows.rbegin(), windows.rend()};
}

bool OtherProgram::IsAskedToClose(xcb_window_t window) const {
    return Eventually([&] {
        const auto came = Own(xcb_poll_for_event(connection_));
        return came && (came->response_type & 0x7F) == XCB_CLIENT_MESSAGE &&
               reinterpret_cast<xcb_client_message_event_t*>(came.get())->window == window;
    });
}

} // namespace korlan::test
