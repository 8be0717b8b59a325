#include "platform/linux/FileUri.h"
#include "platform/linux/qt/X11Pasteboard.h"
#include "tests/conformance/CopyingProgram.h"
#include "tests/conformance/Environment.h"
#include "tests/conformance/EventLoop.h"
#include "tests/conformance/PasteboardConformance.h"
#include "tests/support/TemporaryFolder.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QTimer>
#include <QUrl>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

#include <unistd.h>

namespace clipwren {

namespace {

struct Result {
    int status = -1;
    QByteArray output;
};

// Runs a program to its end while the event loop of this process goes on.
Result run(const char* program, const QStringList& arguments, const QByteArray& input = {}) {
    QProcess process;
    process.start(QString::fromLatin1(program), arguments);
    process.write(input);
    process.closeWriteChannel();
    const bool ended = runEventLoopUntil([&] { return process.state() == QProcess::NotRunning; });
    EXPECT_TRUE(ended) << program;
    if (!ended) process.kill();
    return {process.exitCode(), process.readAllStandardOutput()};
}

// What xclip reads of the clipboard in that form; "(none)" when it is not offered.
std::string read(const char* form) {
    const auto result =
        run("xclip", {QStringLiteral("-o"), QStringLiteral("-selection"), QStringLiteral("clipboard"),
                      QStringLiteral("-t"), QString::fromLatin1(form)});
    return result.status == 0 ? result.output.toStdString() : "(none)";
}

void copyText(const char* text) {
    EXPECT_EQ(
        run("xclip", {QStringLiteral("-i"), QStringLiteral("-selection"), QStringLiteral("clipboard")}, text)
            .status,
        0);
}

void expectAllForms(const std::filesystem::path& file) {
    const auto uri = fileUri(file);
    EXPECT_EQ(read("text/uri-list"), uri + "\r\n");
    EXPECT_EQ(read("x-special/gnome-copied-files"), "copy\n" + uri);
    EXPECT_EQ(read("application/x-kde-cutselection"), "0");
}

// The keepers of that file that run.
std::vector<pid_t> keepersOf(const std::filesystem::path& file) {
    std::vector<pid_t> found;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        std::ifstream stream(entry.path() / "cmdline", std::ios::binary);
        const std::string line(std::istreambuf_iterator<char>(stream), {});
        if (line.starts_with("clipwren") && line.find(fileUri(file)) != std::string::npos)
            found.push_back(std::stoi(entry.path().filename()));
    }
    return found;
}

} // namespace

std::optional<int> runCopyingProgram(int argc, char** argv) {
    if (argc != 3 || argv[1] != std::string_view("--copy-and-end")) return std::nullopt;
    const QApplication application(argc, argv);
    X11Pasteboard pasteboard;
    pasteboard.clearContents();
    if (!pasteboard.writeFileURL(argv[2])) return EXIT_FAILURE;
    QTimer::singleShot(50, [] { QCoreApplication::exit(0); });
    const int status = QCoreApplication::exec();
    pasteboard.leaveBehind();
    return status;
}

struct X11PasteboardSubject {
    X11Pasteboard real;

    Pasteboard& pasteboard() { return real; }
    std::vector<std::filesystem::path> files() {
        std::vector<std::filesystem::path> files;
        const auto text = read("text/uri-list");
        if (text == "(none)") return files;
        for (const auto& line : QByteArray::fromStdString(text).split('\n'))
            if (!line.isEmpty()) files.push_back(QUrl(line.trimmed()).toLocalFile().toStdString());
        return files;
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(X11, PasteboardConformance, X11PasteboardSubject);

struct X11PasteboardTest : testing::Test {
    TemporaryFolder folder;
    std::filesystem::path file = folder.path() / "Recording ü.gif";

    void endProgramThatCopies() const {
        EXPECT_EQ(
            run("/proc/self/exe", {QStringLiteral("--copy-and-end"), QString::fromStdString(file)}).status,
            0);
    }
};

TEST_F(X11PasteboardTest, OffersTheThreeFormsAndNoOther) {
    X11Pasteboard pasteboard;
    EXPECT_TRUE(pasteboard.writeFileURL(file));
    expectAllForms(file);
    EXPECT_EQ(read("TARGETS"), "TARGETS\nTIMESTAMP\nMULTIPLE\ntext/uri-list\n"
                               "x-special/gnome-copied-files\napplication/x-kde-cutselection\n");
    EXPECT_EQ(read("UTF8_STRING"), "(none)");
    EXPECT_EQ(read("image/gif"), "(none)");
}

TEST_F(X11PasteboardTest, GivesSeveralFormsAtOnce) {
    X11Pasteboard pasteboard;
    EXPECT_TRUE(pasteboard.writeFileURL(file));
    // Prints what became of each pair of target and property, and the time at which the clipboard was taken.
    const char* script = R"(
from Xlib import X, Xatom, display
d = display.Display()
atom = d.intern_atom
w = d.screen().root.create_window(0, 0, 1, 1, 0, X.CopyFromParent)
pairs = [atom('text/uri-list'), atom('P1'), atom('image/gif'), atom('P2'), atom('TIMESTAMP'), atom('P3')]
w.change_property(atom('P'), atom('ATOM_PAIR'), 32, pairs)
w.convert_selection(atom('CLIPBOARD'), atom('MULTIPLE'), atom('P'), X.CurrentTime)
event = d.next_event()
assert event.type == X.SelectionNotify and event.property == atom('P'), event
answer = w.get_full_property(atom('P'), X.AnyPropertyType).value
print([d.get_atom_name(a) if a else None for a in answer[1::2]])
print(bytes(w.get_full_property(atom('P1'), X.AnyPropertyType).value).decode().strip())
since = w.get_full_property(atom('P3'), Xatom.INTEGER).value[0]
for time, name in ((since, 'P4'), (since - 1, 'P5')):
    w.convert_selection(atom('CLIPBOARD'), atom('text/uri-list'), atom(name), time)
    print(d.next_event().property == atom(name))
)";
    const auto result =
        run("/usr/bin/python3", {QStringLiteral("-c"), QString::fromLatin1(script)}).output.toStdString();
    EXPECT_EQ(result, "['P1', None, 'P3']\n" + fileUri(file) + "\nTrue\nFalse\n");
}

TEST_F(X11PasteboardTest, AnotherProgramMayTakeTheClipboard) {
    X11Pasteboard pasteboard;
    EXPECT_TRUE(pasteboard.writeFileURL(file));
    copyText("of another");
    EXPECT_EQ(read("UTF8_STRING"), "of another");
    EXPECT_TRUE(pasteboard.writeFileURL(file));
    expectAllForms(file);
}

TEST_F(X11PasteboardTest, WithoutADisplayItSaysNo) {
    const Environment display("DISPLAY", ":4711");
    EXPECT_FALSE(X11Pasteboard().writeFileURL(file));
}

TEST_F(X11PasteboardTest, StaysWhenTheProgramEnds) {
    QElapsedTimer clock;
    clock.start();
    endProgramThatCopies();
    EXPECT_LT(clock.elapsed(), 3000);
    EXPECT_EQ(keepersOf(file).size(), 1u);
    expectAllForms(file);
    expectAllForms(file);

    copyText("of another");
    EXPECT_TRUE(runEventLoopUntil([&] { return keepersOf(file).empty(); }));
    EXPECT_EQ(read("UTF8_STRING"), "of another");
}

TEST_F(X11PasteboardTest, AKeeperMakesRoomForTheNextOne) {
    endProgramThatCopies();
    const auto first = keepersOf(file);
    endProgramThatCopies();
    EXPECT_TRUE(runEventLoopUntil([&] { return keepersOf(file).size() == 1; }));
    EXPECT_NE(keepersOf(file), first);
    expectAllForms(file);
    copyText("");
}

TEST_F(X11PasteboardTest, NothingIsLeftBehindOfWhatAnotherProgramHasReplaced) {
    X11Pasteboard pasteboard;
    EXPECT_TRUE(pasteboard.writeFileURL(file));
    copyText("of another");
    pasteboard.leaveBehind();
    EXPECT_TRUE(keepersOf(file).empty());
    EXPECT_EQ(read("UTF8_STRING"), "of another");
}

TEST_F(X11PasteboardTest, TheKeeperHoldsNothingOfTheProgramThatStartedIt) {
    endProgramThatCopies();
    const auto keepers = keepersOf(file);
    ASSERT_EQ(keepers.size(), 1u);
    EXPECT_EQ(getsid(keepers[0]), keepers[0]);
    const auto process = std::filesystem::path("/proc") / std::to_string(keepers[0]);
    EXPECT_EQ(std::filesystem::read_symlink(process / "cwd"), std::filesystem::path("/"));
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(process / "fd")) {
        const auto target = std::filesystem::read_symlink(entry.path()).string();
        EXPECT_TRUE(target == "/dev/null" || target.starts_with("socket:")) << target;
        ++count;
    }
    EXPECT_EQ(count, 4) << "standard input, output, error and the display";
    copyText("");
}

} // namespace clipwren
