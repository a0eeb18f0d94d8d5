#include "app/ShownCard.h"

#include "app/FrontWindow.h"
#include "app/models/CardSummary.h"
#include "app/windows/CardPanel.h"
#include "app/windows/MainWindow.h"
#include "attestation/page/FormatNSS.h"
#include "card/CardKeys.h"

#include <QDateTime>
#include <QLabel>

using namespace Qt::StringLiterals;

ShownCard::ShownCard(MainWindow& window, FrontWindow& front)
    : m_window(window)
    , m_front(front)
{
}

void ShownCard::show(const CardRecord& record, PanelLine::CardOrigin origin)
{
    m_record = record;
    m_window.vitaleInfoTextField()->setText(cardSummary(m_record));
    m_window.panel().setNumber(formatNSS(m_record->text(CardKey::ssn)));
    m_window.panel().setCardTime(origin, QDateTime::currentDateTime());
    m_window.panel().announceCard();
}

void ShownCard::forget()
{
    m_record.reset();
    m_clipboard.clear();
    m_window.panel().forgetCard();
}

void ShownCard::copyNumber()
{
    copy(m_record ? m_record->text(CardKey::ssn).value_or(QString()) : QString(), u"Numéro copié pour une minute."_s);
}

void ShownCard::copyName()
{
    copy(m_record ? cardSummary(m_record).section(u'\n', 0, 0) : QString(), u"Nom copié pour une minute."_s);
}

void ShownCard::copy(const QString& text, const QString& done)
{
    if (text.isEmpty()) {
        m_front.refuse(u"Il n’y a rien à copier. Lisez d’abord une carte."_s);
        return;
    }
    m_window.panel().beginRequest();
    m_clipboard.copy(text);
    m_window.panel().setDone(done);
}
