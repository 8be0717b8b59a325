#include "platform/linux/XdgLoginItem.h"

#include "platform/linux/DesktopEntry.h"
#include "platform/linux/Files.h"

#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include <unistd.h>

namespace clipwren {

namespace {

constexpr std::size_t longestEntry = 1 << 16;

bool is(std::string_view text, std::string_view key, std::string_view value) {
    return desktopEntryValue(text, key) == value;
}

// A name without a slash is searched for at login, in folders that may not be known here.
bool mayBeStarted(const std::string& program) {
    if (program.empty()) return false;
    std::error_code error;
    return program.find('/') == std::string::npos ||
           (access(program.c_str(), X_OK) == 0 && std::filesystem::is_regular_file(program, error));
}

} // namespace

XdgLoginItem::XdgLoginItem(const std::filesystem::path& configuration, std::filesystem::path program)
    : entry(configuration / "autostart" / "app.clipwren.Clipwren.desktop"),
      program(std::move(program)) {}

LoginItemStatus XdgLoginItem::status() const {
    std::error_code error;
    if (std::filesystem::symlink_status(entry, error).type() == std::filesystem::file_type::not_found)
        return LoginItemStatus::notRegistered;
    const auto text = readSmallFile(entry, longestEntry);
    if (!text) return LoginItemStatus::notFound;
    if (is(*text, "Hidden", "true") || is(*text, "X-GNOME-Autostart-enabled", "false") ||
        is(*text, "X-MATE-Autostart-enabled", "false"))
        return LoginItemStatus::requiresApproval;
    const auto exec = desktopEntryValue(*text, "Exec");
    return exec && mayBeStarted(programInExecValue(*exec)) ? LoginItemStatus::enabled
                                                           : LoginItemStatus::notFound;
}

Expected<void, PlatformError> XdgLoginItem::registerItem() {
    if (program.empty()) return Unexpected{PlatformError{"The program's own path is not known."}};
    const std::string text = "[Desktop Entry]\n"
                             "Type=Application\n"
                             "Name=Clipwren\n"
                             "Comment=Record a region of the screen as a looping GIF\n"
                             "Icon=app.clipwren.Clipwren\n"
                             "Exec=" +
                             execValue(program.string()) +
                             "\n"
                             "Terminal=false\n"
                             "StartupNotify=false\n";
    if (replaceFile(entry, text)) return {};
    return Unexpected{PlatformError{"The file " + entry.string() + " could not be written."}};
}

Expected<void, PlatformError> XdgLoginItem::unregisterItem() {
    std::error_code error;
    std::filesystem::remove(entry, error);
    if (!error) return {};
    return Unexpected{
        PlatformError{"The file " + entry.string() + " could not be removed: " + error.message() + "."}};
}

} // namespace clipwren
