#include "app/models/PanelLine.h"

using namespace Qt::StringLiterals;

namespace {

// With the date only if the other time has a different one.
QString timeText(const QDateTime& time, const QDateTime& beside)
{
    return time.toString(time.date() == beside.date() ? u"HH:mm"_s : u"dd/MM/yyyy 'à' HH:mm"_s);
}

} // namespace

void PanelLine::setCard(CardOrigin origin, const QDateTime& time)
{
    m_card = Card{origin, time};
    m_failedAt.reset();
}

void PanelLine::setReadFailed(const QDateTime& time)
{
    m_failedAt = time;
    m_isCancelled = false;
}

void PanelLine::setReadCancelled(const QDateTime& time)
{
    m_failedAt = time;
    m_isCancelled = true;
}

QString PanelLine::failedReadText() const
{
    QString text = m_isCancelled ? u"Lecture annulée à "_s : u"Lecture échouée à "_s;
    text += m_failedAt->toString(u"HH:mm"_s);
    if (m_card) {
        text += u" – carte précédente, "_s;
        text += m_card->origin == CardOrigin::Reader ? u"lue "_s : u"fichier ouvert "_s;
        text += m_card->time.date() == m_failedAt->date() ? u"à "_s : u"le "_s;
        text += timeText(m_card->time, *m_failedAt);
    }
    return text;
}

QString PanelLine::cardText() const
{
    if (m_isConnecting)
        return u"Connexion au lecteur de cartes…"_s;
    if (m_failedAt)
        return failedReadText();
    if (!m_card)
        return u"Insérez une carte, puis appuyez sur Lire."_s;
    return m_card->time.toString(m_card->origin == CardOrigin::Reader ? u"'Lue le' dd/MM/yyyy 'à' HH:mm"_s
                                                                      : u"'Fichier ouvert le' dd/MM/yyyy 'à' HH:mm"_s);
}

QString PanelLine::text() const
{
    return told().isEmpty() ? cardText() : cardText() + u'\n' + told();
}
