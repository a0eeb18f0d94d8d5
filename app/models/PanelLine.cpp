#include "app/models/PanelLine.h"

#include "app/models/ReaderHint.h"

#include <QFileInfo>

#include <utility>

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
    m_hasCardCome = false;
    clearResult();
}

void PanelLine::forgetCard()
{
    m_card.reset();
    m_failedAt.reset();
    m_saveFailure.clear();
    m_notice.clear();
    clearResult();
}

void PanelLine::setReadFailed(const QDateTime& time)
{
    clearResult();
    m_failedAt = time;
    m_hasCardCome = false;
    m_isCancelled = false;
}

void PanelLine::setReadCancelled(const QDateTime& time)
{
    clearResult();
    m_failedAt = time;
    m_hasCardCome = false;
    m_isCancelled = true;
}

void PanelLine::setReader(const ReaderChange& change)
{
    m_reader = change.state;
    m_hasCardCome = m_reader == CardReaderState::Card && (m_hasCardCome || change.hasCardCome);
}

void PanelLine::setSaveFailure(const QString& text)
{
    m_saveFailure = text;
    clearResult();
}

void PanelLine::setNotice(const QString& text)
{
    m_notice = text;
    if (!text.isEmpty())
        clearResult();
}

// A notice that has come meanwhile was about the same request.
void PanelLine::setResult(Result result)
{
    m_notice.clear();
    m_result = std::move(result);
}

void PanelLine::setSaved(const QString& path)
{
    setResult({u"Enregistrée\u00A0: "_s + shownName(path), path});
}

void PanelLine::setSent(const QString& queue, const QDateTime& time)
{
    setResult({u"Envoyée à «\u202F%1\u202F» à\u00A0%2"_s.arg(queue, time.toString(u"HH:mm"_s)), QString()});
}

const QString& PanelLine::told() const
{
    if (!m_notice.isEmpty())
        return m_notice;
    return m_result.text.isEmpty() ? m_saveFailure : m_result.text;
}

QString PanelLine::shownName(const QString& path)
{
    QString name = QFileInfo(path).fileName();
    // Control characters would begin another line.
    for (QChar& character : name) {
        if (character.category() == QChar::Other_Control)
            character = u' ';
    }
    return name;
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

QString PanelLine::cardPart() const
{
    if (m_failedAt)
        return failedReadText();
    if (!m_card)
        return {};
    return m_card->time.toString(m_card->origin == CardOrigin::Reader ? u"'Lue le' dd/MM/yyyy 'à' HH:mm"_s
                                                                      : u"'Fichier ouvert le' dd/MM/yyyy 'à' HH:mm"_s);
}

QString PanelLine::readerPart() const
{
    if (m_isConnecting)
        return u"Connexion au lecteur de cartes…"_s;
    const bool isBeforeAnyRead = !m_card && !m_failedAt;
    const bool asksForCard = !m_reader || m_reader == CardReaderState::Empty;
    const bool asksForRead = m_reader == CardReaderState::Card;
    if ((asksForCard && !isBeforeAnyRead) || (asksForRead && !isBeforeAnyRead && !m_hasCardCome))
        return {};
    return readerHint(m_reader);
}

QString PanelLine::cardText() const
{
    if (m_isConnecting)
        return readerPart();
    QStringList parts{cardPart(), readerPart()};
    parts.removeAll(QString());
    return parts.join(u". "_s);
}

QString PanelLine::text() const
{
    return told().isEmpty() ? cardText() : cardText() + u'\n' + told();
}
