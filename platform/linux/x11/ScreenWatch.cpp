#include "platform/linux/x11/ScreenWatch.h"

#include "plat/LogWriter.h"
#include "platform/linux/graphics/FrameDiff.h"
#include "platform/linux/graphics/MoveDetector.h"
#include "platform/linux/x11/ScreenFormat.h"

#include <xcb/xcbext.h>

#include <utility>

static plat::LogWriter vlog("ScreenWatch");

namespace platform::x11 {
namespace {

/// How often the whole screen is read where the server does not report damage.
constexpr FramePacer::Micros timedInterval = 100'000;

/// So many reads in a row may fail before the stream gives up.
constexpr int maxFailures = 20;

bool isWithin(unsigned sequence, unsigned first, unsigned last) noexcept {
    return sequence - first <= last - first; // sequence numbers wrap around
}

} // namespace

/// Wakes the watch when the host gives a surface back that the watch is waiting for.
/// Threads: any; it may outlive the watch.
class ScreenWatch::Idleness final : public SurfaceIdleListener {
public:
    void onSurfaceIdle() noexcept override {
        if (!isWanted.load(std::memory_order_acquire))
            return;
        const std::scoped_lock lock(mutex);
        if (source != nullptr && isWanted.exchange(false))
            g_source_set_ready_time(source, 0);
    }

    void want(bool wanted) noexcept { isWanted.store(wanted, std::memory_order_release); }

    void setSource(GSource* newSource) noexcept {
        const std::scoped_lock lock(mutex);
        source = newSource;
    }

private:
    std::atomic<bool> isWanted = false;
    std::mutex mutex;
    GSource* source = nullptr;
};

std::unique_ptr<ScreenWatch> ScreenWatch::open(std::unique_ptr<Connection> connection,
                                               const Setup& setup, FrameSink& sink) {
    std::unique_ptr<ScreenWatch> watch(new ScreenWatch(std::move(connection), setup, sink));
    const SigpipeGuard guard(*watch->connection);
    if (!watch->openParts())
        return nullptr;
    xcb_flush(watch->connection->get());
    return watch;
}

ScreenWatch::ScreenWatch(std::unique_ptr<Connection> opened, const Setup& given, FrameSink& frames)
    : connection(std::move(opened)), setup(given), sink(frames),
      idleness(std::make_shared<Idleness>()), geometry(*connection, given.display, given.place),
      pacer(given.frameInterval), source(*connection, "display stream", [this] { dispatch(); }) {}

bool ScreenWatch::openParts() {
    // A palette can change under the pixels, which then are no longer what they were.
    if (!screenFormat(*connection).isSupported()) {
        vlog.error("The screen's colours (depth %d) are not made of red, green and blue parts",
                   int{connection->screen().root_depth});
        return false;
    }
    const FrameReader::Setup frames{setup.width, setup.height, setup.frames, idleness};
    reader = FrameReader::open(*connection, frames);
    if (reader == nullptr)
        return false;
    damage = DamageWatch::open(*connection);
    if (damage == nullptr) {
        vlog.info("No damage is reported: the whole screen is read %d times a second",
                  static_cast<int>(1'000'000 / timedInterval));
        pacer = FramePacer(std::max(setup.frameInterval, timedInterval));
    }
    viewport = geometry.viewport(setup.width, setup.height);
    vlog.debug("Watching display %u: %dx%d at %d,%d of the screen", setup.display, setup.width,
               setup.height, viewport.x, viewport.y);
    damageAll();
    return !connection->isBroken();
}

ScreenWatch::~ScreenWatch() {
    const SigpipeGuard guard(*connection);
    detach();
    if (isBusy && !request.isReading)
        xcb_discard_reply(connection->get(), request.sequence);
    // Before the connection, which they free what they hold of the server through.
    damage.reset();
    reader.reset();
    xcb_flush(connection->get());
}

void ScreenWatch::attach(GMainContext* context) {
    drainThread = std::make_shared<DrainThread>(connection->fd(), [this] { return drain(); });
    source.attach(context);
    idleness->setSource(source.get());
}

void ScreenWatch::detach() {
    if (source.get() == nullptr)
        return;
    idleness->setSource(nullptr);
    drainThread->close();
    source.detach();
}

// Handing a frame on is the last thing it does: the host may stop and delete the stream meanwhile.
void ScreenWatch::dispatch() {
    if (hasEnded)
        return;
    Frame* finished = nullptr;
    {
        const SigpipeGuard guard(*connection);
        handleEvents();
        followGeometry();
        finished = pollRequest();
        if (finished == nullptr) // until it is handed over, nobody holds it
            step();
        scheduleWake();
        xcb_flush(connection->get());
        hasEnded = connection->isBroken() || failures > maxFailures;
    }
    if (hasEnded) {
        if (failures > maxFailures)
            vlog.error("Reading the screen failed %d times in a row; the stream ends", failures);
        else
            vlog.error("The X server is gone; the stream ends");
        detach();
        sink.onEnd();
        return;
    }
    if (finished != nullptr)
        handOver(*finished);
}

void ScreenWatch::handOver(Frame& frame) {
    const FrameChange change = takeChange(frame);
    const std::shared_ptr<DrainThread> drainer = drainThread;
    GSource* const own = g_source_ref(source.get());
    drainer->begin();
    sink.onFrame(*frame.surface, change);
    // What the drain has read no longer shows on the socket.
    if (drainer->end())
        g_source_set_ready_time(own, 0);
    g_source_unref(own);
}

/// In place of the thread that the host keeps busy: takes damage, and leaves frames alone.
std::optional<std::int64_t> ScreenWatch::drain() {
    const SigpipeGuard guard(*connection);
    handleEvents();
    followGeometry();
    if (connection->isBroken())
        return std::nullopt;
    pollRequest();
    const FramePacer::Micros now = g_get_monotonic_time();
    if (!isBusy && damage != nullptr && pacer.nextStep(now, false) == FramePacer::Step::Take)
        sendTake(nullptr);
    xcb_flush(connection->get());
    const auto next = isBusy ? std::nullopt : pacer.wakeTime(false);
    return next ? std::max<std::int64_t>(*next - now, 0) : -1;
}

void ScreenWatch::handleEvents() {
    while (const auto event = source.nextEvent())
        handleEvent(*event);
}

void ScreenWatch::handleEvent(const xcb_generic_event_t& event) {
    if (event.response_type == 0)
        handleError(reinterpret_cast<const xcb_generic_error_t&>(event));
    else if (damage != nullptr && damage->isNotify(event))
        pacer.onDamage();
    else
        geometry.onEvent(event);
}

// While the screen changes its shape, a read of what is no longer there fails, and is repeated.
void ScreenWatch::handleError(const xcb_generic_error_t& error) {
    if (isBusy && isWithin(error.full_sequence, request.firstSequence, request.sequence))
        request.hasFailed = true;
    if (!geometry.isAsking())
        logError("Watching the screen", error);
}

void ScreenWatch::followGeometry() {
    if (!geometry.poll())
        return;
    const Viewport now = geometry.viewport(setup.width, setup.height);
    if (now == viewport)
        return;
    viewport = now;
    damageAll();
    request.hasFailed = true; // it may have read the old place
}

/// The frame that the request under way has finished, or null.
Frame* ScreenWatch::pollRequest() {
    if (!isBusy)
        return nullptr;
    if (!request.isReading && !pollReply())
        return nullptr;
    if (request.frame == nullptr) {
        isBusy = false;
        return nullptr;
    }
    switch (reader->poll()) {
    case FrameReader::Progress::Pending:
        return nullptr;
    case FrameReader::Progress::Failed:
        request.hasFailed = true;
        break;
    case FrameReader::Progress::Done:
        break;
    }
    return finishFrame();
}

/// Whether the reply to the request is there; then its rectangles are taken in, and pixels that had
/// to wait for them are asked for.
bool ScreenWatch::pollReply() {
    void* answer = nullptr;
    xcb_generic_error_t* problem = nullptr;
    if (xcb_poll_for_reply(connection->get(), request.sequence, &answer, &problem) == 0)
        return false;
    const Reply<void> reply(answer);
    const Reply<xcb_generic_error_t> error(problem);
    if (error != nullptr)
        handleError(*error);
    request.isReading = true;
    if (damage == nullptr)
        return true;
    onTaken(static_cast<const xcb_xfixes_fetch_region_reply_t*>(reply.get()));
    if (request.frame != nullptr && !reader->readsUnderRegion())
        reader->send(*request.frame, viewport, request.frame->missed.rectangles(), 0);
    return true;
}

void ScreenWatch::onTaken(const xcb_xfixes_fetch_region_reply_t* answer) {
    if (answer == nullptr) {
        damageAll(); // what was taken is lost
        return;
    }
    std::vector<PixelRect> rects = DamageWatch::rectsOf(*answer);
    for (PixelRect& rect : rects)
        rect = viewport.toFrame(rect).intersection(viewport.visible);
    std::erase_if(rects, [](const PixelRect& rect) { return rect.isEmpty(); });
    pacer.onTaken(g_get_monotonic_time(), rects.size());
    addDamage(rects);
}

Frame* ScreenWatch::finishFrame() {
    // What the server reported before the reply counts too: an error, a new shape of the screen.
    handleEvents();
    isBusy = false;
    Frame& frame = *request.frame;
    if (request.hasFailed || geometry.isAsking()) {
        if (shown == &frame)
            shown = nullptr; // it no longer shows what was handed on
        if (!geometry.isAsking())
            ++failures;
        pacer.onChange();
        return nullptr;
    }
    failures = 0;
    tellWhatIsNewer(frame);
    frame.missed.clear();
    const FramePacer::Micros now = g_get_monotonic_time();
    const bool isNews = hasNews(frame);
    if (isNews || damage == nullptr)
        pacer.onDelivered(now);
    else
        pacer.onIdle();
    if (damage == nullptr)
        pacer.onChange();
    return isNews ? &frame : nullptr;
}

// A frame is also brought up to date where damage was told long ago, and pixels may be newer than
// the damage that was taken. What differs there is told as well: whoever copies what is told, and
// nothing else, has the frame, and the source of what moved.
void ScreenWatch::tellWhatIsNewer(Frame& frame) {
    if (damage == nullptr || shown == &frame)
        return;
    const Region updated = Region(frame.missed.rectangles()).minus(Region(changed.rectangles()));
    if (shown == nullptr)
        addDamage(updated.rectangles());
    else
        addDamage(differences(*shown->surface, *frame.surface, updated.rectangles()));
}

bool ScreenWatch::hasNews(const Frame& frame) {
    if (damage == nullptr && changed.isEmpty()) {
        const PixelRect all[] = {whole()};
        if (shown == nullptr || shown == &frame)
            changed.add(all); // nothing is left to compare with
        else
            changed.add(differences(*shown->surface, *frame.surface, all));
    }
    return !changed.isEmpty();
}

void ScreenWatch::addDamage(std::span<const PixelRect> rects) {
    changed.add(rects);
    for (Frame& frame : reader->frames())
        frame.missed.add(rects);
}

void ScreenWatch::damageAll() {
    const PixelRect all[] = {whole()};
    addDamage(all);
    pacer.onChange();
}

void ScreenWatch::step() {
    if (isBusy)
        return;
    Frame* frame = writableFrame();
    switch (pacer.nextStep(g_get_monotonic_time(), frame != nullptr)) {
    case FramePacer::Step::Wait:
        break;
    case FramePacer::Step::Take:
        sendTake(nullptr);
        break;
    case FramePacer::Step::Frame:
        if (damage != nullptr)
            sendTake(frame);
        else
            sendTimedFrame(*frame);
        break;
    }
}

/// A frame that may be written now, or null; then a surface that is given back wakes the watch.
Frame* ScreenWatch::writableFrame() {
    if (geometry.isAsking())
        return nullptr;
    idleness->want(false);
    if (Frame* frame = reader->idleFrame(shown))
        return frame;
    idleness->want(true);
    return reader->idleFrame(shown); // one may have been given back in between
}

void ScreenWatch::beginRequest(Frame* frame) {
    isBusy = true;
    request = {};
    request.frame = frame;
    request.firstSequence = xcb_no_operation(connection->get()).sequence;
}

// In this order nothing is lost: what is drawn after the take is reported anew, and the pixels are
// never older than the damage.
void ScreenWatch::sendTake(Frame* frame) {
    beginRequest(frame);
    damage->sendTake();
    pacer.onTakeSent();
    if (frame != nullptr && reader->readsUnderRegion())
        reader->send(*frame, viewport, frame->missed.rectangles(), damage->taken());
    request.sequence = damage->sendFetch();
}

void ScreenWatch::sendTimedFrame(Frame& frame) {
    beginRequest(&frame);
    const PixelRect all[] = {whole()};
    reader->send(frame, viewport, all, 0);
    request.sequence = xcb_get_input_focus(connection->get()).sequence;
}

void ScreenWatch::scheduleWake() {
    std::optional<FramePacer::Micros> time;
    if (!isBusy)
        time = pacer.wakeTime(writableFrame() != nullptr);
    source.wakeAt(time);
}

FrameChange ScreenWatch::takeChange(const Frame& frame) {
    FrameChange change;
    change.dirty = changed.rectangles();
    const MoveSearch search =
        geometry.takeWindowsMoved() ? MoveSearch::ScrollsAndWindows : MoveSearch::Scrolls;
    if (shown != nullptr && shown != &frame)
        findMoves(*shown->surface, *frame.surface, search, change);
    changed.clear();
    shown = &frame;
    return change;
}

} // namespace platform::x11
