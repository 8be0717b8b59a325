#include "platform/linux/x11/X11CaptureWorker.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace clipwren {

namespace {

using Nanoseconds = X11CaptureLink::Nanoseconds;

constexpr Nanoseconds millisecond = 1'000'000;

// At the start the windows that the selector covered draw themselves anew: the first frame waits until
// nothing has been drawn in the region for a while, but not for ever on a screen that never rests.
constexpr Nanoseconds quietAtStart = 25 * millisecond;
constexpr Nanoseconds longestSettling = 120 * millisecond;

// What one more read costs, in pixels that could be read instead.
constexpr std::int64_t readOverhead = 16'384;

// How many pixels are read on the chance that they were drawn again.
constexpr std::int64_t mostExpected = 16'384;

// When at least this part of the region was drawn anew, all of it is read.
constexpr std::int64_t leastOfAllNumerator = 3;
constexpr std::int64_t leastOfAllDenominator = 5;

// A read may be refused because the screens have just changed; if it is refused again and again there is
// something else.
constexpr int mostRefusals = 3;

// After so long without a change the next one is taken to be far. Long enough for what the next one then
// costs not to matter.
constexpr Nanoseconds restAfter = 10'000 * millisecond;

// When the region has moved with its display, the veil over it follows, and the windows below find their
// places.
constexpr Nanoseconds screensSettleIn = 250 * millisecond;
// How often to look for a display that is away.
constexpr Nanoseconds absenceCheck = 100 * millisecond;

constexpr int largestSide = 32767; // of a picture in X11

Nanoseconds frameInterval(const MediaTime& time) {
    const double seconds = time.seconds();
    return std::isfinite(seconds) ? std::llround(std::clamp(seconds, 0.001, 10.0) * 1e9) : 1'000'000'000 / 30;
}

bool isSupported(const StreamConfiguration& configuration) {
    const Rect whole{0, 0, static_cast<double>(configuration.width),
                     static_cast<double>(configuration.height)};
    return configuration.pixelFormat == pixelFormatBGRA && !configuration.capturesAudio &&
           configuration.scalesToFit && configuration.destinationRect == whole && configuration.width >= 1 &&
           configuration.height >= 1 && configuration.width <= largestSide &&
           configuration.height <= largestSide;
}

} // namespace

X11CaptureWorker::X11CaptureWorker(Job job, Client& client, EndSignal& end)
    : job(std::move(job)),
      client(client),
      end(end),
      pacer(frameInterval(this->job.configuration.minimumFrameInterval)) {}

X11CaptureWorker::~X11CaptureWorker() = default;

void X11CaptureWorker::fail(std::string text) {
    if (!failure) failure = PlatformError{std::move(text)};
}

bool X11CaptureWorker::mayGoOn() const { return !failure && end.requested() == EndSignal::Request::none; }

std::optional<PlatformError> X11CaptureWorker::run() {
    if (!connect()) return failure;
    settle();
    while (mayGoOn()) {
        handleEvents();
        followScreens();
        if (!mayGoOn()) break;
        if (place->isAway()) {
            link->sleep(X11CaptureLink::now() + absenceCheck);
            continue;
        }
        const Nanoseconds now = X11CaptureLink::now();
        if (nextLook() <= now)
            look(false);
        else if (restsAt <= now)
            rest();
        else
            sleep();
    }
    // What was drawn since the last frame belongs to the recording, even if its time had not come yet.
    if (end.requested() == EndSignal::Request::finish && !failure && !pictureIsStale && !place->isAway()) {
        look(true);
        // A server that goes away while the recording ends has not cut it short.
        failure.reset();
    }
    return failure;
}

bool X11CaptureWorker::connect() {
    if (!isSupported(job.configuration)) {
        fail("This kind of recording is not supported.");
        return false;
    }
    auto opened = X11CaptureLink::open(job.displayName, end);
    if (!opened) {
        failure = opened.error();
        return false;
    }
    link = std::move(opened.value());
    if (!link->hasKnownPixels()) {
        fail("This display's pixel format is not supported.");
        return false;
    }
    place.emplace(*link, job.displayID, job.configuration.sourceRect);
    if (auto error = place->find()) {
        failure = std::move(error);
        return false;
    }
    if (!mayGoOn()) return false;

    damage = X11DamageWatch::create(*link);
    if (!damage) {
        fail("The display server cannot report what changes on the screen.");
        return false;
    }
    if (job.configuration.showsCursor) pointer = std::make_unique<X11PointerWatch>(*link);
    reader = std::make_unique<X11PictureReader>(*link, place->region().area());
    composer.emplace(PixelSize{place->region().width, place->region().height},
                     PixelSize{job.configuration.width, job.configuration.height});
    if (link->isLost()) fail("The display server ended the connection.");
    return mayGoOn();
}

void X11CaptureWorker::settle() {
    // A new watch reports all that there is, once.
    damage->ask();
    damage->take();
    const Nanoseconds begin = X11CaptureLink::now();
    Nanoseconds quietSince = begin;
    while (mayGoOn()) {
        handleEvents();
        const Nanoseconds now = X11CaptureLink::now();
        const Nanoseconds enough = std::min(quietSince + quietAtStart, begin + longestSettling);
        if (now >= enough) break;
        if (!damage->changedAt()) {
            link->sleep(enough);
            continue;
        }
        damage->ask();
        const auto drawn = damage->take();
        if (!drawn) break;
        for (const PixelRect& rect : *drawn)
            if (!rect.intersection(place->region()).isEmpty()) quietSince = now;
    }
}

// Until the next look, or what may make it earlier.
void X11CaptureWorker::sleep() {
    // Where more is drawn than is taken, being woken by it before its time would tell nothing new.
    const Nanoseconds now = X11CaptureLink::now();
    if (isAhead && !damage->changedAt() && pacer.earliest() > now) {
        link->sleepDeaf(pacer.earliest());
        return handleEvents(now);
    }
    const Nanoseconds due = std::min(nextLook(), restsAt);
    link->sleep(due == INT64_MAX ? std::nullopt : std::optional(due));
}

// Nothing has changed for long: memory that was held for what comes next is given back, and the receiver
// hears of the rest.
void X11CaptureWorker::rest() {
    restsAt = X11CaptureLink::now() + restAfter;
    if (!client.takesSample()) return;
    composer->rest();
    reader->rest();
    client.deliver({.isValid = true,
                    .status = static_cast<int>(FrameStatus::idle),
                    .presentationTime = MediaTime::nanoseconds(X11CaptureLink::now())});
    restsAt = INT64_MAX;
}

// What has happened since the time given, if it is not known any better.
void X11CaptureWorker::handleEvents(std::optional<Nanoseconds> since) {
    while (const auto event = link->nextEvent()) {
        const int type = event->response_type & 0x7F;
        if (damage->handle(*event, since.value_or(X11CaptureLink::now()))) continue;
        if (pointer && pointer->handle(*event)) continue;
        if (!place->handle(*event) && type == 0) ++refusals;
    }
    if (link->isLost()) fail("The display server ended the connection.");
    if (refusals >= mostRefusals) fail("The display server refuses to hand out the picture.");
}

void X11CaptureWorker::followScreens() {
    if (!mayGoOn()) return;
    const auto change = place->follow();
    if (!change) {
        fail(change.error().localizedDescription);
    } else if (*change == X11RegionPlace::Change::shown || *change == X11RegionPlace::Change::moved) {
        composer->clear();
        pictureIsStale = true;
        if (*change == X11RegionPlace::Change::moved) heldUntil = X11CaptureLink::now() + screensSettleIn;
    }
}

X11CaptureWorker::Nanoseconds X11CaptureWorker::nextLook() const {
    if (pictureIsStale) return std::max(heldUntil, pacer.dueForPointer());
    Nanoseconds due = INT64_MAX;
    if (const auto changed = damage->changedAt()) due = pacer.dueForChange(*changed);
    if (pointer) due = std::min(due, pointer->dueAt(pacer));
    return std::max(due, heldUntil);
}

// One look at the screen: what was drawn and where the pointer is, and a sample of it.
void X11CaptureWorker::look(bool isLast) {
    // The last frame is handed over in any case: nothing comes after it that could carry its content.
    if (!isLast && !client.takesSample()) {
        heldUntil = X11CaptureLink::now() + frameInterval(job.configuration.minimumFrameInterval) / 2;
        return;
    }
    // One batch of requests and one wait for it. Where everything moves the picture is asked for along with
    // what was drawn, on the chance that it is all of it again; what is drawn between the two is reported
    // once more.
    const bool asksDamage = damage->changedAt() || pictureIsStale || isLast;
    // Where little is drawn it is expected at the place where it was the last time.
    const bool asksAll = asksDamage && expectsAll && canReadAll();
    const bool asksParts = asksDamage && !asksAll && !pictureIsStale && !expectedParts.empty();
    const auto changed = damage->changedAt();
    isAhead = changed && *changed + FramePacer::settleTime < pacer.earliest();
    if (asksDamage && !asksParts) expectedParts.clear();
    if (asksDamage) damage->ask();
    if (pointer) pointer->ask();
    if (asksAll) reader->askStaying(place->region());
    if (asksParts) reader->ask(expectedParts);
    std::optional<std::vector<PixelRect>> drawn;
    if (asksDamage) drawn = damage->take();
    const Nanoseconds time = X11CaptureLink::now();
    const bool knowsPointer = !pointer || pointer->take(time);
    const bool hasAll = asksAll && takeAll();
    // It is as it is on the screen, expected or not; what is missing is asked for anew.
    if (asksParts && !reader->take(toComposer())) expectedParts.clear();
    const bool answered = knowsPointer && drawn.has_value() == asksDamage && hasAll == asksAll;

    bool insideRegion = false;
    if (!answered || (drawn && !readChanges(*drawn, hasAll, insideRegion))) {
        if (end.requested() != EndSignal::Request::none) return;
        // The screens may have just changed: they are read anew, and then everything in the region.
        if (link->isLost()) fail("The display server ended the connection.");
        ++refusals;
        place->doubt();
        pictureIsStale = true;
        pacer.looked(time);
        return;
    }
    refusals = 0;
    if (pointer)
        composer->setCursor(pointer->shape(), pointer->x() - place->region().x,
                            pointer->y() - place->region().y);

    StreamSample sample{.isValid = true, .presentationTime = MediaTime::nanoseconds(time)};
    sample.image = composer->compose();
    if (!sample.image) {
        pacer.looked(time);
        if (!insideRegion) return;
    } else {
        pacer.took(time);
        restsAt = time + restAfter;
    }
    sample.status = static_cast<int>(sample.image ? FrameStatus::complete : FrameStatus::idle);
    if (!std::exchange(hasStarted, true)) client.captureStarted();
    client.deliver(std::move(sample));
}

bool X11CaptureWorker::canReadAll() const {
    return reader->isShared() &&
           place->visible() == std::vector{PixelRect{0, 0, place->region().width, place->region().height}};
}

bool X11CaptureWorker::takeAll() {
    Pixel* pixels = reader->takeStaying();
    if (pixels) composer->adopt(pixels);
    return pixels != nullptr;
}

// Brings the composer's picture up to date, of which `hasAll` says that it already is.
bool X11CaptureWorker::readChanges(const std::vector<PixelRect>& drawn, bool hasAll, bool& insideRegion) {
    TileMap tiles({place->region().width, place->region().height});
    if (pictureIsStale) tiles.markAll();
    for (const PixelRect& rect : drawn)
        tiles.mark({rect.x - place->region().x, rect.y - place->region().y, rect.width, rect.height});
    const std::vector<PixelRect> marked = joined(tiles.rects(), readOverhead);
    std::vector<PixelRect> parts;
    std::int64_t drawnArea = 0;
    for (const PixelRect& part : place->visible())
        for (const PixelRect& rect : marked) {
            const PixelRect shown = rect.intersection(part);
            if (shown.isEmpty()) continue;
            parts.push_back(
                {shown.x + place->region().x, shown.y + place->region().y, shown.width, shown.height});
            drawnArea += shown.area();
        }
    insideRegion = !parts.empty();
    // What is read in one piece need not be copied.
    expectsAll = drawnArea * leastOfAllDenominator >= place->region().area() * leastOfAllNumerator;
    bool read = hasAll;
    if (!hasAll && expectsAll && canReadAll()) {
        reader->askStaying(place->region());
        read = takeAll();
    } else if (!hasAll) {
        read = readParts(parts);
    }
    if (read) pictureIsStale = false;
    if (!parts.empty()) {
        const bool isLittle =
            reader->isShared() && drawnArea <= std::min(mostExpected, place->region().area());
        expectedParts = read && isLittle ? std::move(parts) : std::vector<PixelRect>();
    }
    return read;
}

// But for what was read along with the question what was drawn.
bool X11CaptureWorker::readParts(const std::vector<PixelRect>& parts) {
    std::vector<PixelRect> missing;
    for (const PixelRect& part : parts)
        if (std::ranges::none_of(expectedParts,
                                 [&](const PixelRect& known) { return known.intersection(part) == part; }))
            missing.push_back(part);
    return reader->read(missing, toComposer());
}

X11PictureReader::Sink X11CaptureWorker::toComposer() {
    return [this](const PixelRect& rect, const Pixel* pixels, std::ptrdiff_t stride) {
        composer->update({rect.x - place->region().x, rect.y - place->region().y, rect.width, rect.height},
                         pixels, stride);
    };
}

} // namespace clipwren
