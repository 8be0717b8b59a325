// The texts that others write and Clipwren reads: the user's folders, desktop entries, the X server's
// resources.

#include "fuzz/Demand.h"
#include "platform/linux/DesktopEntry.h"
#include "platform/linux/XdgFolders.h"
#include "platform/linux/x11/ScreenLayout.h"

#include <cstddef>
#include <cstdint>

using namespace clipwren;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);

    const auto pictures = picturesInUserDirs(text, "/home/ada");
    demand(!pictures || pictures->is_absolute(), "a pictures folder is an absolute path");
    demand(!pictures || *pictures != "/home/ada", "the home folder is no pictures folder");

    const double scale = scaleFromResources(text);
    demand(scale >= 1 && scale < 100, "a scale that a screen may have");

    for (const char* key : {"Exec", "Hidden", "Type"})
        if (const auto value = desktopEntryValue(text, key)) programInExecValue(*value);
    programInExecValue(text);
    // Programs are absolute paths; only zeros cannot stand in them.
    std::string program = "/";
    program.append(text, 0, text.find('\0'));
    demand(programInExecValue(execValue(program)) == program, "a program in a desktop entry comes back");
    return 0;
}
