// drag-source FILE: a window at the bottom left of the screen, from which the file can be dragged with the left button,
// as from a file manager. It prints the point of the screen where the drag must begin, "dragging" when the drag has
// begun, "accepts" or "refuses" for each answer of a window below the file, and "finished" or "cancelled" at the end.
#include <QAbstractNativeEventFilter>
#include <QApplication>
#include <QDrag>
#include <QLabel>
#include <QMimeData>
#include <QMouseEvent>
#include <QScreen>
#include <QTimer>
#include <QUrl>
#include <QWindow>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include <xcb/xcb.h>

namespace {

void say(const char* text)
{
    std::puts(text);
    std::fflush(stdout);
}

/// Prints the answers of the windows below the dragged file.
class Ear final : public QAbstractNativeEventFilter
{
public:
    Ear()
        : m_status(atom("XdndStatus"))
        , m_finished(atom("XdndFinished"))
    {
        qApp->installNativeEventFilter(this);
    }

    bool nativeEventFilter(const QByteArray& /*type*/, void* message, qintptr* /*result*/) override
    {
        const auto* event = static_cast<const xcb_generic_event_t*>(message);
        if ((event->response_type & 0x7f) != XCB_CLIENT_MESSAGE)
            return false;
        const auto* words = static_cast<const xcb_client_message_event_t*>(message);
        // The first bit of the second word: whether a drop would be accepted.
        if (words->type == m_status)
            say((words->data.data32[1] & 1) != 0 ? "accepts" : "refuses");
        else if (words->type == m_finished)
            say("finished");
        return false;
    }

private:
    static xcb_atom_t atom(std::string_view name)
    {
        xcb_connection_t* connection = qApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
        const auto asked = xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
        xcb_intern_atom_reply_t* reply = xcb_intern_atom_reply(connection, asked, nullptr);
        const xcb_atom_t number = reply->atom;
        std::free(reply); // NOLINT: X's memory
        return number;
    }

    xcb_atom_t m_status;
    xcb_atom_t m_finished;
};

class Source final : public QLabel
{
public:
    explicit Source(const QString& path)
        : QLabel(QStringLiteral("drag-source"))
        , m_url(QUrl::fromLocalFile(path))
    {
        setFixedSize(100, 40);
    }

    bool event(QEvent* event) override
    {
        if (event->type() == QEvent::WindowActivate) {
            const QPoint middle = mapToGlobal(rect().center());
            std::printf("%d %d\n", middle.x(), middle.y());
            std::fflush(stdout);
        }
        return QLabel::event(event);
    }

protected:
    void mousePressEvent(QMouseEvent* /*event*/) override
    {
        auto* content = new QMimeData;
        content->setUrls({m_url});
        auto* drag = new QDrag(this);
        drag->setMimeData(content);
        QTimer::singleShot(0, drag, [] { say("dragging"); });
        if (drag->exec(Qt::CopyAction) == Qt::IgnoreAction)
            say("cancelled");
    }

private:
    QUrl m_url;
};

} // namespace

int main(int argc, char* argv[])
{
    const QApplication application(argc, argv);
    const Ear ear;
    Source source(QApplication::arguments().value(1));
    const QRect screen = source.screen()->availableGeometry();
    source.move(screen.left() + 10, screen.bottom() - 100);
    source.show();
    return QApplication::exec();
}
