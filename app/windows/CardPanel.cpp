#include "app/windows/CardPanel.h"

#include "app/models/CardSummary.h"
#include "app/windows/FileLink.h"
#include "app/windows/PanelLineField.h"
#include "app/windows/SpokenNotice.h"
#include "app/windows/SummaryField.h"
#include "support/views/MVSimpleOpaqueView.h"
#include "support/views/ReadableInk.h"

#include <QFileInfo>

#include <chrono>
#include <optional>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr QColor panelColour(0, 162, 1);
// Background of an earlier card. The panel's text colour is legible on it too.
constexpr QColor plateColour(122, 170, 122);

// Binding usually takes a few tenths of a second.
constexpr auto usualConnecting = 1s;

} // namespace

CardPanel::CardPanel(const Widgets& widgets)
    : m_widgets(widgets)
    , m_spokenNotice(new SpokenNotice(&widgets.view))
    , m_formerNotice(new SpokenNotice(&widgets.view))
{
    m_connectingTimer.setSingleShot(true);
    m_connectingTimer.setInterval(usualConnecting);
    connect(&m_connectingTimer, &QTimer::timeout, this, [this] {
        m_line.setConnecting(true);
        announce(m_line.readerPart());
        showLine();
    });
    connect(&m_widgets.line.link(), &FileLink::clicked, this, [this] { Q_EMIT fileRequested(m_line.savedPath()); });
    connect(&m_widgets.line.link(), &FileLink::folderRequested, this,
            [this] { Q_EMIT folderRequested(QFileInfo(m_line.savedPath()).path()); });
}

void CardPanel::clear()
{
    m_widgets.view.setBackgroundColor(panelColour);
    QPalette inks = m_widgets.view.palette();
    inks.setColor(QPalette::WindowText, readableInk(panelColour));
    m_widgets.view.setPalette(inks);
    m_widgets.summary.setText(summaryBeforeAnyCard.toString());
    setNumber(QString());
    m_line = PanelLine();
    showLine();
}

void CardPanel::forgetCard()
{
    m_widgets.summary.setText(summaryBeforeAnyCard.toString());
    setNumber(QString());
    m_cardNotice.clear();
    m_line.forgetCard();
    announce(m_line.readerPart());
    // It may name the patient.
    m_formerNotice->say(QString());
    showLine();
}

void CardPanel::announceCard()
{
    const QString summary = m_widgets.summary.text();
    // Without the number, which others could hear.
    m_cardNotice = summary.section(u'\n', 0, 0) + u", "_s + summary.section(u'\n', 2);
    announce(m_cardNotice);
}

void CardPanel::setCardTime(PanelLine::CardOrigin origin, const QDateTime& time)
{
    m_line.setCard(origin, time);
    showLine();
}

void CardPanel::setReadFailed(const QDateTime& time)
{
    m_cardNotice.clear();
    setNotice(QString());
    m_line.setReadFailed(time);
    showLine();
}

void CardPanel::setReadCancelled(const QDateTime& time)
{
    m_cardNotice.clear();
    setNotice(QString());
    m_line.setReadCancelled(time);
    showLine();
}

void CardPanel::setSaveFailure(const QString& text)
{
    m_line.setSaveFailure(text);
    announce(text);
    showLine();
}

void CardPanel::setNotice(const QString& text)
{
    m_line.setNotice(text);
    announce(text);
    showLine();
}

void CardPanel::beginRequest()
{
    m_line.clearResult();
    setNotice(QString());
}

void CardPanel::clearResult()
{
    m_line.clearResult();
    announce(QString());
    showLine();
}

void CardPanel::setSaved(const QString& path)
{
    m_line.setSaved(path);
    announce(m_line.told());
    showLine();
}

void CardPanel::setSent(const QString& queue, const QDateTime& time)
{
    m_line.setSent(queue, time);
    announce(m_line.told());
    showLine();
}

void CardPanel::setDone(const QString& text)
{
    m_line.setDone(text);
    announce(m_line.told());
    showLine();
}

void CardPanel::setNumber(const QString& grouped)
{
    m_widgets.summary.setNumber(grouped);
}

// Screen readers announce new texts. An announced text stays as long as the panel shows it.
void CardPanel::announce(const QString& text)
{
    const QString spoken = m_spokenNotice->accessibleName();
    const bool isShown = spoken == m_line.told() || spoken == m_line.readerPart() || spoken == m_cardNotice;
    if (text.isEmpty() && isShown)
        return;
    // Screen readers fetch a text a moment after they are notified: the former one keeps a widget of its own.
    std::swap(m_spokenNotice, m_formerNotice);
    m_formerNotice->hide();
    m_spokenNotice->say(text);
}

void CardPanel::setReader(const ReaderChange& change)
{
    const QString before = m_line.text();
    m_line.setReader(change);
    if (m_line.text() == before)
        return;
    announce(m_line.readerPart());
    showLine();
}

void CardPanel::setConnecting(bool isConnecting)
{
    if (isConnecting) {
        m_connectingTimer.start();
        return;
    }
    m_connectingTimer.stop();
    const QString before = m_line.text();
    m_line.setConnecting(false);
    if (m_line.text() != before)
        announce(m_line.readerPart());
    showLine();
}

void CardPanel::showLine()
{
    m_widgets.line.show(m_line.text(), m_line.savedPath());
    // Not only by colour: also in italics, and for screen readers.
    const bool isEarlier = m_line.isCardEarlier();
    m_widgets.summary.setPlate(isEarlier ? std::optional(plateColour) : std::nullopt);
    const QString description =
        isEarlier ? u"Carte précédente\u00A0: la dernière lecture n’a pas abouti."_s : QString();
    if (m_widgets.summary.accessibleDescription() != description)
        m_widgets.summary.setAccessibleDescription(description);
}
