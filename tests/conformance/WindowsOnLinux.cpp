#include "platform/linux/qt/QtCanvas.h"
#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11Screens.h"
#include "platform/linux/x11/X11Windows.h"
#include "tests/conformance/EventLoop.h"
#include "tests/conformance/SyntheticInput.h"
#include "tests/conformance/WindowsConformance.h"

#include <QPainter>

#include <xcb/xcb.h>

#include <algorithm>
#include <array>
#include <random>

namespace clipwren {

namespace {

constexpr double arrival = 0.04; // seconds in which events have surely come

struct X11Subject {
    std::unique_ptr<X11Connection> connection = std::move(*X11Connection::open());
    X11Screens x11Screens{*connection};
    X11Windows x11Windows{*connection, x11Screens};
    SyntheticInput user;
    NativeScreen screen = readScreens(connection->raw(), connection->screen()).front();

    X11Subject() { user.moveTo(2, 2); }

    Windows& windows() { return x11Windows; }
    Rect frame() const { return {200, 200, 400, 300}; }
    // Pixels of the root, of the frame's point.
    int nativeX(double x) const { return screen.pixels.x + static_cast<int>(frame().x + x); }
    int nativeY(double y) const { return screen.pixels.maxY() - static_cast<int>(frame().y + y); }
    PixelRect native(const Rect& rect) const {
        return {nativeX(rect.x), nativeY(rect.maxY()), static_cast<int>(rect.width),
                static_cast<int>(rect.height)};
    }
    void moveTo(Point point) { user.moveTo(nativeX(point.x), nativeY(point.y)); }
    void press() { user.press(); }
    void release() { user.release(); }
    void tap(std::uint32_t keyCode) {
        user.tap(keyCode == KeyCode::escape ? SyntheticInput::escape : SyntheticInput::physicalG);
    }
    void settle() { runEventLoop(arrival); }
};

// A window of another program, one colour, above all others.
class OtherWindow {
public:
    OtherWindow(SyntheticInput& user, const PixelRect& place, std::uint32_t color)
        : connection(user.raw()),
          id(xcb_generate_id(connection)) {
        const std::array<std::uint32_t, 3> values{color, 1,
                                                  XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_KEY_PRESS};
        xcb_create_window(connection, XCB_COPY_FROM_PARENT, id, user.root(),
                          static_cast<std::int16_t>(place.x), static_cast<std::int16_t>(place.y),
                          static_cast<std::uint16_t>(place.width), static_cast<std::uint16_t>(place.height),
                          0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                          XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values.data());
        xcb_map_window(connection, id);
        user.focusedWindow(); // A round trip.
    }
    ~OtherWindow() {
        xcb_destroy_window(connection, id);
        xcb_flush(connection);
    }
    // The events of that kind since the last call.
    int count(std::uint8_t type) {
        int found = 0;
        while (const auto event = owned(xcb_poll_for_event(connection)))
            found += (event->response_type & 0x7F) == type ? 1 : 0;
        return found;
    }
    void raise() {
        const std::uint32_t above = XCB_STACK_MODE_ABOVE;
        xcb_configure_window(connection, id, XCB_CONFIG_WINDOW_STACK_MODE, &above);
        xcb_flush(connection);
    }

private:
    xcb_connection_t* connection;

public:
    const xcb_window_t id;
};

struct PaintingContent : NotingContent {
    Color color = Color::black(0.5);
    std::optional<Rect> clear;
    std::string label;
    int drawings = 0;

    void draw(Canvas& canvas, const Rect& bounds) override {
        ++drawings;
        paint(canvas, bounds);
    }
    void paint(Canvas& canvas, const Rect& bounds) const {
        if (!clear) {
            canvas.fill(std::array{bounds}, WindingRule::nonZero, color);
            return;
        }
        canvas.fill(std::array{bounds, *clear}, WindingRule::evenOdd, color);
        canvas.strokeRectangle(*clear, 1, std::array{4.0, 2.0}, Color::white());
        const Font font{.size = 11, .monospacedDigits = true};
        const Size size = canvas.measure(label, font);
        canvas.fillRoundedRectangle({clear->x, clear->y - size.height - 6, size.width + 10, size.height + 4},
                                    3, Color::black(0.75));
        canvas.drawText(label, {clear->x + 5, clear->y - size.height - 4}, font, Color::white());
    }
};

int distance(std::uint32_t one, std::uint32_t other) {
    int largest = 0;
    for (int shift = 0; shift < 24; shift += 8)
        largest = std::max(largest, std::abs(static_cast<int>(one >> shift & 0xFF) -
                                             static_cast<int>(other >> shift & 0xFF)));
    return largest;
}

class X11WindowsTest : public testing::Test {
protected:
    static constexpr std::uint32_t ground = 0xFFC08040;
    X11Subject subject;
    SyntheticInput& user = subject.user;
    // What lies below everything that is tested.
    OtherWindow below{user, subject.native({-50, -50, 500, 400}), ground & 0xFFFFFF};
    std::shared_ptr<PaintingContent> content = std::make_shared<PaintingContent>();

    X11WindowsTest() {
        EXPECT_TRUE(runEventLoopUntil([&] { return at(100, 100) == ground && at(390, 290) == ground; }));
    }
    std::uint32_t at(double x, double y) { return user.look(subject.nativeX(x), subject.nativeY(y)); }

    std::unique_ptr<CoveringWindow> make(bool ignoresMouseEvents) {
        auto window = subject.windows().makeCoveringWindow(
            {.contentRect = subject.frame(), .ignoresMouseEvents = ignoresMouseEvents});
        window->setContent(content);
        return window;
    }
    // How much of a place of the frame is as it was below, from 0 to 1.
    double shareOfGround(const Rect& rect) {
        const auto pixels = user.look(subject.native(rect));
        return static_cast<double>(std::count(pixels.begin(), pixels.end(), ground)) /
               static_cast<double>(pixels.size());
    }
    bool isDimmed(const Rect& rect) { return shareOfGround(rect) < 0.6; }
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(X11, WindowsConformance, X11Subject);

TEST_F(X11WindowsTest, LeavesTheHoleUntouched) {
    const auto window = make(true);
    window->setHole(Rect{100, 50, 120, 80});
    window->orderFrontRegardless();
    ASSERT_TRUE(runEventLoopUntil([&] { return isDimmed({0, 0, 400, 50}) && isDimmed({300, 100, 90, 90}); }));
    EXPECT_EQ(shareOfGround({100, 50, 120, 80}), 1);
    for (const Rect& beside :
         {Rect{98, 50, 2, 80}, Rect{220, 50, 2, 80}, Rect{100, 48, 120, 2}, Rect{100, 130, 120, 2}})
        EXPECT_TRUE(isDimmed(beside)) << beside.x << ' ' << beside.y;
    window->setHole(std::nullopt);
    EXPECT_TRUE(runEventLoopUntil([&] { return isDimmed({100, 50, 120, 80}); }));
}

TEST_F(X11WindowsTest, IsGoneWhenOrderOutReturns) {
    for (const bool ignoresMouseEvents : {false, true}) {
        const auto window = make(ignoresMouseEvents);
        window->orderFrontRegardless();
        ASSERT_TRUE(runEventLoopUntil([&] { return isDimmed({0, 0, 400, 300}); }));
        window->orderOut();
        // No event loop and no waiting in between.
        EXPECT_EQ(shareOfGround({0, 0, 400, 300}), 1) << ignoresMouseEvents;
    }
    auto window = make(false);
    window->orderFrontRegardless();
    ASSERT_TRUE(runEventLoopUntil([&] { return isDimmed({0, 0, 400, 300}); }));
    window = nullptr;
    EXPECT_EQ(shareOfGround({0, 0, 400, 300}), 1);
}

TEST_F(X11WindowsTest, LetsClicksThrough) {
    const auto veil = make(true);
    veil->orderFrontRegardless();
    subject.settle();
    below.count(0);
    subject.moveTo({50, 50});
    user.press();
    user.release();
    user.press(4);
    user.release(4);
    subject.settle();
    EXPECT_EQ(below.count(XCB_BUTTON_PRESS), 2);
}

TEST_F(X11WindowsTest, CatchesClicksOutsideTheHoleOnly) {
    const auto window = make(false);
    window->setHole(Rect{100, 50, 120, 80});
    window->orderFrontRegardless();
    subject.settle();
    below.count(0);
    for (const Point point : {Point{150, 100}, Point{50, 100}}) {
        subject.moveTo(point);
        user.press();
        user.release();
    }
    subject.settle();
    EXPECT_EQ(below.count(XCB_BUTTON_PRESS), 1);
    EXPECT_EQ(content->mouse, (std::vector<NotingContent::Event>{{"down", {50, 100}}, {"up", {50, 100}}}));
}

TEST_F(X11WindowsTest, LeavesTheFocusWhereItIs) {
    const OtherWindow focused(user, {30, 30, 100, 100}, 0x404040);
    xcb_set_input_focus(user.raw(), XCB_INPUT_FOCUS_PARENT, focused.id, XCB_CURRENT_TIME);
    subject.settle();
    const auto focus = user.focusedWindow();
    EXPECT_EQ(focus, focused.id);
    const auto window = make(false);
    window->makeKeyAndOrderFront();
    subject.moveTo({50, 50});
    user.press();
    user.release();
    subject.settle();
    EXPECT_EQ(user.focusedWindow(), focus);
    window->orderOut();
    subject.settle();
    EXPECT_EQ(user.focusedWindow(), focus);
}

TEST_F(X11WindowsTest, StaysAboveNewAndRaisedWindows) {
    const auto window = make(false);
    window->makeKeyAndOrderFront();
    subject.settle();
    OtherWindow popUp(user, subject.native({50, 50, 60, 60}), 0xFFFFFF);
    subject.settle();
    EXPECT_TRUE(runEventLoopUntil([&] { return at(80, 80) != 0xFFFFFFFF; }));
    subject.moveTo({80, 80});
    user.press();
    user.release();
    popUp.raise();
    subject.settle();
    user.press();
    user.release();
    subject.settle();
    EXPECT_EQ(content->mouse.size(), 4u);
    EXPECT_EQ(popUp.count(XCB_BUTTON_PRESS), 0);
}

TEST_F(X11WindowsTest, TwoOfThemDoNotFight) {
    const auto one = make(true);
    const auto other = make(true);
    one->orderFrontRegardless();
    other->orderFrontRegardless();
    subject.settle();
    const std::uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    for (const auto& window : {one.get(), other.get()})
        xcb_change_window_attributes(user.raw(), static_cast<xcb_window_t>(window->windowNumber()),
                                     XCB_CW_EVENT_MASK, &mask);
    OtherWindow popUp(user, subject.native({50, 50, 60, 60}), 0xFFFFFF);
    runEventLoop(0.5);
    const int moves = popUp.count(XCB_CONFIGURE_NOTIFY);
    EXPECT_GE(moves, 1);
    EXPECT_LE(moves, 2);
}

TEST_F(X11WindowsTest, GivesInAgainstAProgramThatInsists) {
    const auto window = make(true);
    window->orderFrontRegardless();
    subject.settle();
    const std::uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(user.raw(), static_cast<xcb_window_t>(window->windowNumber()),
                                 XCB_CW_EVENT_MASK, &mask);
    OtherWindow stubborn(user, subject.native({50, 50, 60, 60}), 0xFFFFFF);
    int moves = 0;
    for (int i = 0; i < 200; ++i) {
        stubborn.raise();
        runEventLoop(0.002);
        moves += stubborn.count(XCB_CONFIGURE_NOTIFY);
    }
    EXPECT_GE(moves, 10);
    EXPECT_LE(moves, 45); // Twenty in each of the two seconds that this may touch, and a few under way.
    runEventLoop(1.1);
    EXPECT_GE(stubborn.count(XCB_CONFIGURE_NOTIFY), 1);
}

TEST_F(X11WindowsTest, DrawsOnceForManyRequests) {
    const auto window = make(false);
    window->makeKeyAndOrderFront();
    subject.settle();
    content->drawings = 0;
    for (int i = 0; i < 5; ++i)
        window->setNeedsDisplay();
    EXPECT_EQ(content->drawings, 0);
    subject.settle();
    EXPECT_EQ(content->drawings, 1);
}

// Whatever was shown before, the window looks as if painted wholly.
TEST_F(X11WindowsTest, ShowsEveryPaintingWhole) {
    const auto window = make(false);
    window->makeKeyAndOrderFront();
    subject.settle();
    const QFont face = X11Windows::interfaceFont();
    std::mt19937 random(7);
    const auto upTo = [&](int limit) {
        return static_cast<double>(std::uniform_int_distribution(0, limit * 2)(random)) / 2;
    };
    for (int i = 0; i < 25; ++i) {
        if (i % 8 == 7) {
            content->clear.reset();
        } else {
            content->clear = Rect{upTo(350) - 20, upTo(250) - 20, upTo(200), upTo(150)};
            content->label = std::to_string(i * 37) + " × " + std::to_string(i);
        }
        window->setNeedsDisplay();
        QImage expected(400, 300, QImage::Format_RGB32);
        expected.fill(ground);
        QPainter painter(&expected);
        QtCanvas canvas(painter, 300, face);
        content->paint(canvas, {0, 0, 400, 300});
        painter.end();
        std::size_t worst = 0;
        const bool isSame = runEventLoopUntil([&] {
            const auto pixels = user.look(subject.native({0, 0, 400, 300}));
            worst = 0;
            for (std::size_t p = 0; p < pixels.size(); ++p) {
                const auto wanted = reinterpret_cast<const std::uint32_t*>(expected.constBits())[p];
                worst += distance(pixels[p], wanted) > 3 ? 1 : 0; // Compositors round in their own way.
            }
            return worst == 0;
        });
        ASSERT_TRUE(isSame) << "painting " << i << ", different pixels: " << worst;
    }
}

TEST_F(X11WindowsTest, PaintsAgainWhatWasCovered) {
    const auto window = make(false);
    content->clear = Rect{100, 100, 100, 100};
    window->makeKeyAndOrderFront();
    subject.settle();
    const auto before = user.look(subject.native({0, 0, 400, 300}));
    {
        const OtherWindow popUp(user, subject.native({50, 50, 200, 200}), 0xFFFFFF);
        runEventLoop(0.1);
    }
    EXPECT_TRUE(runEventLoopUntil([&] { return user.look(subject.native({0, 0, 400, 300})) == before; }));
}

// Every key from the moment a key window may be seen, until it has gone or the monitor has ended.
TEST_F(X11WindowsTest, NoKeySlipsPastAKeyWindow) {
    xcb_set_input_focus(user.raw(), XCB_INPUT_FOCUS_PARENT, below.id, XCB_CURRENT_TIME);
    user.tap(SyntheticInput::escape);
    subject.settle();
    ASSERT_EQ(below.count(XCB_KEY_PRESS), 1);
    const CoveringWindowOptions options{.contentRect = subject.frame(), .canBecomeKey = true};
    const auto first = subject.windows().makeCoveringWindow(options);
    const auto second = subject.windows().makeCoveringWindow(options);
    first->makeKeyAndOrderFront();
    user.tap(SyntheticInput::escape);
    second->makeKeyAndOrderFront();
    user.tap(SyntheticInput::escape);
    first->orderOut();
    user.tap(SyntheticInput::escape);
    subject.settle();
    EXPECT_EQ(below.count(XCB_KEY_PRESS), 0);
    second->orderOut();
    user.tap(SyntheticInput::escape);
    subject.settle();
    EXPECT_EQ(below.count(XCB_KEY_PRESS), 1) << "nobody needs the keyboard any more";

    first->makeKeyAndOrderFront();
    auto monitor = subject.windows().monitorKeyDown([](std::uint32_t) { return false; });
    ASSERT_TRUE(monitor);
    first->orderOut();
    user.tap(SyntheticInput::escape);
    subject.settle();
    EXPECT_EQ(below.count(XCB_KEY_PRESS), 0) << "it is monitored still";
    second->makeKeyAndOrderFront();
    monitor = nullptr;
    user.tap(SyntheticInput::escape);
    subject.settle();
    EXPECT_EQ(below.count(XCB_KEY_PRESS), 1)
        << "keys go back when their monitor ends, not when the window goes";
}

TEST_F(X11WindowsTest, RefusesTheKeyboardThatAnotherHas) {
    const auto reply =
        owned(xcb_grab_keyboard_reply(user.raw(),
                                      xcb_grab_keyboard(user.raw(), false, user.root(), XCB_CURRENT_TIME,
                                                        XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC),
                                      nullptr));
    ASSERT_TRUE(reply && reply->status == XCB_GRAB_STATUS_SUCCESS);
    EXPECT_FALSE(subject.windows().monitorKeyDown([](std::uint32_t) { return true; }));
    xcb_ungrab_keyboard(user.raw(), XCB_CURRENT_TIME);
    user.focusedWindow();
    EXPECT_TRUE(subject.windows().monitorKeyDown([](std::uint32_t) { return true; }));
}

} // namespace clipwren
