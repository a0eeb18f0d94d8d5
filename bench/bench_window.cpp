// Runs a program once, watches its window through the events of the X server, and prints the figures, one a line:
//   map        milliseconds from the program's start to its window (100 x 100 or more) on the screen
//   memory     peak memory then, in MiB
//   cpu        milliseconds of processor time until then, of the program and its children
//   paint      milliseconds from the start to the first painting that shows something: a row of two colours
//   painted-memory  peak memory then, in MiB
//   settled    milliseconds from the start to the last painting before a second of rest
//   click      milliseconds from a click of the mouse to the last painting before a second of rest
//   idle-cpu   milliseconds of processor time, of the program and its children, in the time of idleness
//   idle-growth growth of its memory meanwhile, in MiB
//
// Usage: bench_window [--click X Y] [--idle SECONDS] PROGRAM [ARGUMENT...]
// X and Y count from the window's corner.
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/damage.h>
#include <xcb/xcb.h>
#include <xcb/xtest.h>

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

namespace {

constexpr auto patience = std::chrono::seconds(30);
constexpr auto rest = std::chrono::seconds(1);
constexpr int smallestWindow = 100;
constexpr std::uint8_t sentEventFlag = 0x80;
constexpr std::uint8_t leftButton = 1;

struct Free
{
    void operator()(void* memory) const { std::free(memory); }
};
template <typename Reply>
using Pointer = std::unique_ptr<Reply, Free>;

[[noreturn]] void fail(const std::string& reason)
{
    throw std::runtime_error(reason);
}

void report(const char* name, double value)
{
    std::printf("%s %.2f\n", name, value);
}

double since(Clock::time_point start, Clock::time_point end = Clock::now())
{
    return Milliseconds(end - start).count();
}

/// The screen, as a client of the server that only watches and clicks.
class Screen
{
public:
    Screen()
        : m_connection(xcb_connect(nullptr, nullptr))
    {
        if (xcb_connection_has_error(m_connection) != 0)
            fail("no display");
        m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
        const std::uint32_t events = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        xcb_change_window_attributes(m_connection, m_root, XCB_CW_EVENT_MASK, &events);
        const Pointer<xcb_damage_query_version_reply_t> version(
            xcb_damage_query_version_reply(m_connection, xcb_damage_query_version(m_connection, 1, 1), nullptr));
        m_damageEvent = xcb_get_extension_data(m_connection, &xcb_damage_id)->first_event;
    }
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;
    ~Screen() { xcb_disconnect(m_connection); }

    /// Waits for a window of at least the smallest size on the screen; the time at which it was shown.
    Clock::time_point waitForWindow()
    {
        const Clock::time_point end = Clock::now() + patience;
        while (const auto event = nextEvent(end)) {
            if ((event->response_type & ~sentEventFlag) != XCB_MAP_NOTIFY)
                continue;
            const Clock::time_point now = Clock::now();
            const xcb_window_t window = reinterpret_cast<const xcb_map_notify_event_t*>(event.get())->window;
            if (!isLarge(window))
                continue;
            m_window = contentOf(window);
            return now;
        }
        fail("no window");
    }

    void watchPainting()
    {
        const xcb_damage_damage_t damage = xcb_generate_id(m_connection);
        xcb_damage_create(m_connection, damage, m_window, XCB_DAMAGE_REPORT_LEVEL_RAW_RECTANGLES);
        xcb_flush(m_connection);
    }

    /// The time of the first painting with content; none if a period of rest comes before. A window without content has
    /// one colour.
    std::optional<Clock::time_point> waitForContent()
    {
        while (const auto event = nextEvent(Clock::now() + rest, isDamage())) {
            const Clock::time_point now = Clock::now();
            if (hasContent())
                return now;
        }
        return {};
    }

    /// The time of the last painting before a period of rest; none if nothing was painted.
    std::optional<Clock::time_point> waitForRest()
    {
        std::optional<Clock::time_point> last;
        while (const auto event = nextEvent(Clock::now() + rest, isDamage()))
            last = Clock::now();
        return last;
    }

    void movePointer(int x, int y)
    {
        const Pointer<xcb_translate_coordinates_reply_t> place(xcb_translate_coordinates_reply(
            m_connection,
            xcb_translate_coordinates(m_connection, m_window, m_root, static_cast<std::int16_t>(x),
                                      static_cast<std::int16_t>(y)),
            nullptr));
        if (place)
            xcb_test_fake_input(m_connection, XCB_MOTION_NOTIFY, 0, XCB_CURRENT_TIME, m_root, place->dst_x,
                                place->dst_y, 0);
        xcb_flush(m_connection);
    }

    void click()
    {
        for (const std::uint8_t event : {std::uint8_t{XCB_BUTTON_PRESS}, std::uint8_t{XCB_BUTTON_RELEASE}})
            xcb_test_fake_input(m_connection, event, leftButton, XCB_CURRENT_TIME, m_root, 0, 0, 0);
        xcb_flush(m_connection);
    }

private:
    /// The next event, of that type or of any; null if there is none before the end.
    Pointer<xcb_generic_event_t> nextEvent(Clock::time_point end, std::optional<int> type = {})
    {
        while (true) {
            Pointer<xcb_generic_event_t> event(xcb_poll_for_event(m_connection));
            if (event && (!type || (event->response_type & ~sentEventFlag) == *type))
                return event;
            if (event)
                continue;
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
            pollfd ready{.fd = xcb_get_file_descriptor(m_connection), .events = POLLIN, .revents = 0};
            if (left <= 0 || poll(&ready, 1, static_cast<int>(left)) == 0)
                return {};
        }
    }

    /// Whether the row in the middle of the window has more than one colour.
    [[nodiscard]] bool hasContent() const
    {
        const Pointer<xcb_get_geometry_reply_t> geometry(
            xcb_get_geometry_reply(m_connection, xcb_get_geometry(m_connection, m_window), nullptr));
        if (!geometry)
            return false;
        const auto middle = static_cast<std::int16_t>(geometry->height / 2);
        const Pointer<xcb_get_image_reply_t> row(
            xcb_get_image_reply(m_connection,
                                xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_window, 0, middle,
                                              geometry->width, 1, ~std::uint32_t{0}),
                                nullptr));
        if (!row)
            return false;
        constexpr std::size_t pixel = 4;
        const std::string_view bytes(reinterpret_cast<const char*>(xcb_get_image_data(row.get())),
                                     static_cast<std::size_t>(xcb_get_image_data_length(row.get())));
        return bytes.size() > pixel && bytes.substr(pixel) != bytes.substr(0, bytes.size() - pixel);
    }

    [[nodiscard]] int isDamage() const { return m_damageEvent + XCB_DAMAGE_NOTIFY; }

    [[nodiscard]] bool isLarge(xcb_window_t window) const
    {
        const Pointer<xcb_get_geometry_reply_t> geometry(
            xcb_get_geometry_reply(m_connection, xcb_get_geometry(m_connection, window), nullptr));
        return geometry && geometry->width >= smallestWindow && geometry->height >= smallestWindow;
    }

    /// The program's window inside the window manager's frame.
    [[nodiscard]] xcb_window_t contentOf(xcb_window_t frame) const
    {
        const Pointer<xcb_query_tree_reply_t> tree(
            xcb_query_tree_reply(m_connection, xcb_query_tree(m_connection, frame), nullptr));
        if (!tree)
            return frame;
        const xcb_window_t* const children = xcb_query_tree_children(tree.get());
        const int count = xcb_query_tree_children_length(tree.get());
        const xcb_window_t* const content = std::find_if(children, children + count, [&](xcb_window_t child) {
            const Pointer<xcb_get_property_reply_t> name(xcb_get_property_reply(
                m_connection, xcb_get_property(m_connection, 0, child, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 0, 1),
                nullptr));
            return name && name->type != XCB_ATOM_NONE;
        });
        return content == children + count ? frame : *content;
    }

    xcb_connection_t* m_connection;
    xcb_window_t m_root = XCB_WINDOW_NONE;
    xcb_window_t m_window = XCB_WINDOW_NONE;
    int m_damageEvent = 0;
};

/// The program that is run; killed at the end.
class Program
{
public:
    explicit Program(char* const* command)
    {
        if (posix_spawnp(&m_process, command[0], nullptr, nullptr, command, environ) != 0)
            fail("no program");
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;
    ~Program()
    {
        kill(m_process, SIGKILL);
        waitpid(m_process, nullptr, 0);
    }

    /// A field of the process's status, in MiB.
    [[nodiscard]] double memory(const std::string& field) const
    {
        std::ifstream status("/proc/" + std::to_string(m_process) + "/status");
        std::string line;
        while (std::getline(status, line)) {
            if (line.starts_with(field + ':'))
                return std::strtod(line.c_str() + field.size() + 1, nullptr) / 1024;
        }
        fail("no " + field);
    }

    /// Milliseconds of processor time of the program and of its children.
    [[nodiscard]] double processorTime() const
    {
        double total = 0;
        for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
            const std::string name = entry.path().filename();
            if (name.find_first_not_of("0123456789") == std::string::npos)
                total += processorTimeOf(name);
        }
        return total;
    }

private:
    [[nodiscard]] double processorTimeOf(const std::string& process) const
    {
        // The scheduler's own figure, in nanoseconds, is finer than the ticks of "stat".
        std::ifstream stat("/proc/" + process + "/stat");
        const std::string text((std::istreambuf_iterator<char>(stat)), {});
        std::istringstream fields(text.substr(std::min(text.rfind(')') + 1, text.size())));
        std::string state;
        pid_t parent = 0;
        fields >> state >> parent;
        if (process != std::to_string(m_process) && parent != m_process)
            return 0;
        double nanoseconds = 0;
        std::error_code gone;
        for (const auto& thread : std::filesystem::directory_iterator("/proc/" + process + "/task", gone)) {
            double own = 0;
            std::ifstream(thread.path() / "schedstat") >> own;
            nanoseconds += own;
        }
        return nanoseconds / 1e6;
    }

    pid_t m_process = 0;
};

struct Options
{
    std::optional<std::pair<int, int>> click;
    std::chrono::seconds idle{0};
    char* const* command = nullptr;
};

Options parsed(char** argv)
{
    Options options;
    char** argument = argv + 1;
    for (; *argument != nullptr; ++argument) {
        const std::string name = *argument;
        if (name == "--click" && argument[1] != nullptr && argument[2] != nullptr) {
            options.click = {std::atoi(argument[1]), std::atoi(argument[2])};
            argument += 2;
        } else if (name == "--idle" && argument[1] != nullptr) {
            options.idle = std::chrono::seconds(std::atoi(*++argument));
        } else {
            break;
        }
    }
    options.command = argument;
    if (*argument == nullptr)
        fail("no program");
    return options;
}

void run(const Options& options)
{
    Screen screen;
    const Clock::time_point start = Clock::now();
    const Program program(options.command);
    const Clock::time_point mapped = screen.waitForWindow();
    const double memory = program.memory("VmHWM");
    const double processorTime = program.processorTime();
    screen.watchPainting();
    report("map", since(start, mapped));
    report("memory", memory);
    report("cpu", processorTime);
    if (const auto painted = screen.waitForContent()) {
        report("paint", since(start, *painted));
        report("painted-memory", program.memory("VmHWM"));
        report("settled", since(start, screen.waitForRest().value_or(*painted)));
    }

    if (options.click) {
        screen.movePointer(options.click->first, options.click->second);
        static_cast<void>(screen.waitForRest());
        const Clock::time_point clicked = Clock::now();
        screen.click();
        const auto answer = screen.waitForRest();
        if (!answer)
            fail("the click did nothing");
        report("click", since(clicked, *answer));
    }
    if (options.idle.count() > 0) {
        const double memoryBefore = program.memory("VmRSS");
        const double timeBefore = program.processorTime();
        poll(nullptr, 0, static_cast<int>(std::chrono::milliseconds(options.idle).count()));
        report("idle-cpu", program.processorTime() - timeBefore);
        report("idle-growth", program.memory("VmRSS") - memoryBefore);
    }
}

} // namespace

int main(int /*argc*/, char** argv)
{
    try {
        run(parsed(argv));
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "bench_window: %s\n", failure.what());
        return 1;
    }
    return 0;
}
