// The attestation's page on the screen: from a new card to its page, and from a new size of the window to the page at
// its new scale, beside a window that draws the same page and nothing else. Times end when the X server has the
// picture. Meant for a screen of 3840 by 2160 pixels.
#include "BarePage.h"
#include "SpecimenCard.h"
#include "Timing.h"
#include "attestation/page/SchemeLogos.h"
#include "attestation/print/PrintDesk.h"
#include "attestation/text/PageFonts.h"
#include "attestation/viewer/MVAttestationWindowController.h"
#include "attestation/viewer/MVNewAttestationView.h"
#include "attestation/viewer/MVScrollView.h"
#include "card/CardKeys.h"
#include "platform/UserDefaults.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QPainter>
#include <QScreen>
#include <QSvgRenderer>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <vector>

#include <xcb/xcb.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int warmUps = 10;
constexpr int rounds = 100;

double milliseconds(const QElapsedTimer& timer)
{
    return double(timer.nsecsElapsed()) / 1e6;
}

// Waits until the X server has handled all requests.
void waitForServer()
{
    const auto* x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
    if (x11 == nullptr)
        qFatal("this needs an X server");
    xcb_connection_t* connection = x11->connection();
    std::free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr)); // NOLINT: X's memory
}

// Draws the bare page at the scale that fits, in the middle.
class BareWindow final : public QWidget
{
public:
    BareWindow(BareFonts fonts, QSvgRenderer& logo)
        : m_fonts(std::move(fonts))
        , m_logo(logo)
    {
    }

    [[nodiscard]] QRect pageRect() const
    {
        QRectF page(QPointF(), QSizeF(595, 842) * scale());
        page.moveCenter(QRectF(rect()).center());
        return page.toAlignedRect();
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override
    {
        QPainter painter(this);
        painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
        painter.translate(pageRect().topLeft());
        painter.scale(scale() / 16, scale() / 16);
        drawBarePage(painter, m_fonts, m_logo);
    }

private:
    [[nodiscard]] double scale() const { return std::min({1.0, width() / 615.0, height() / 862.0}); }

    BareFonts m_fonts;
    QSvgRenderer& m_logo;
};

// How long a widget takes to paint itself.
class PaintTimer final : public QObject
{
public:
    explicit PaintTimer(QWidget& widget) { widget.installEventFilter(this); }

    [[nodiscard]] bool hasPainted() const { return m_hasPainted; }
    [[nodiscard]] double lastPaint() const { return m_lastPaint; }
    void start() { m_hasPainted = false; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() != QEvent::Paint)
            return false;
        QElapsedTimer timer;
        timer.start();
        watched->event(event);
        m_lastPaint = milliseconds(timer);
        m_hasPainted = true;
        return true;
    }

private:
    bool m_hasPainted = false;
    double m_lastPaint = 0;
};

struct Times
{
    std::vector<double> paint;
    std::vector<double> whole; // to the picture in the X server
};

// The change is given the round's number.
Times measure(QWidget& painted, const std::function<void(int)>& change)
{
    PaintTimer paint(painted);
    Times times;
    for (int round = 0; round < warmUps + rounds; ++round) {
        paint.start();
        QElapsedTimer timer;
        timer.start();
        change(round);
        while (!paint.hasPainted())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        QCoreApplication::processEvents();
        waitForServer();
        if (round >= warmUps) {
            times.paint.push_back(paint.lastPaint());
            times.whole.push_back(milliseconds(timer));
        }
        QCoreApplication::processEvents();
    }
    return times;
}

void report(const char* what, const Times& ours, const Times& bare)
{
    std::printf("%-34s page painted %6.2f ms, on the screen %6.2f ms; bare %6.2f ms, %6.2f ms\n", what,
                median(ours.paint), median(ours.whole), median(bare.paint), median(bare.whole));
}

// Sizes close to the given one; each differs from the one before.
std::function<void(int)> resizing(QWidget& window, QSize size)
{
    return [&window, size](int round) { window.resize(size - QSize(round % 50, round % 50)); };
}

} // namespace

int main(int argc, char* argv[])
{
    const QApplication application(argc, argv);
    const QTemporaryDir folder;
    UserDefaults settings(folder.filePath(u"Pelmora.conf"_s));
    const QString resources = QStringLiteral(PELMORA_STAGE_SHARE);
    const Bundle bundle(resources);
    const auto fonts = PageFonts::load(bundle);
    if (!fonts)
        qFatal("%s", qPrintable(fonts.error().localizedDescription()));
    SchemeLogos logos(bundle);
    PrintDesk printDesk(settings, logos, *fonts, bundle.pathForProgram(u"pelmora-cards"_s));
    MVAttestationWindowController viewer(settings, logos, *fonts, printDesk);
    viewer.setVitale(specimenCard());
    QWidget& page = *viewer.scrollView()->findChild<MVNewAttestationView*>();
    QSvgRenderer logo(QStringLiteral(PELMORA_LOGOS "/01.svg"));
    BareWindow bare(loadBareFonts(resources), logo);
    bare.move(0, 0);
    viewer.window()->move(0, 0);

    CardRecord other = specimenCard();
    other.setText(CardKey::firstName, u"Zoé"_s);
    const auto setVitale = [&viewer, &other](int round) { viewer.setVitale(round % 2 == 0 ? other : specimenCard()); };
    const auto update = [&bare](int /*round*/) { bare.update(bare.pageRect()); };

    const QSize screen = QApplication::primaryScreen()->size();
    const auto compare = [&](const char* what, QSize size, const auto& change, const auto& bareChange) {
        viewer.window()->resize(size);
        viewer.window()->show();
        const Times ours = measure(page, change);
        viewer.window()->hide();
        bare.resize(size);
        bare.show();
        report(what, ours, measure(bare, bareChange));
        bare.hide();
    };
    std::printf("screen of %d x %d at %g pixels a point\n", screen.width(), screen.height(), page.devicePixelRatioF());
    compare("new card (at most 16 ms)", QSize(615, 890), setVitale, update);
    compare("new card, whole screen", screen, setVitale, update);
    compare("resizing, page 1:1 (at most 8 ms)", screen, resizing(*viewer.window(), screen), resizing(bare, screen));
    const QSize low(screen.width(), 850);
    compare("resizing, page scaled", low, resizing(*viewer.window(), low), resizing(bare, low));
    return 0;
}
