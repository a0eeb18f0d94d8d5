#include "tests/attestation/page/InkItems.h"

#include "attestation/text/TextShaping.h"

using namespace Qt::StringLiterals;

QList<InkText> textsOf(const PageInk& ink)
{
    return itemsOf<InkText>(ink);
}

QPointF placeOf(const PageInk& ink, const QString& text)
{
    for (const InkText& candidate : textsOf(ink)) {
        if (candidate.text == text)
            return candidate.position;
    }
    return nowhere;
}

double widthOf(const InkText& text)
{
    return widthOfText(text.text, text.font);
}

double rightOf(const InkText& text)
{
    return text.position.x() + widthOf(text);
}

bool isClose(double left, double right)
{
    return qAbs(left - right) < 0.01;
}

QString described(const QPointF& from, const QPointF& to)
{
    return u"%1 %2 %3 %4"_s.arg(from.x()).arg(from.y()).arg(to.x()).arg(to.y());
}

QStringList rulesOf(const PageInk& ink)
{
    QStringList rules;
    for (const InkRule& rule : itemsOf<InkRule>(ink))
        rules.append(described(rule.from, rule.to));
    return rules;
}

QStringList strokesOf(const PageInk& ink)
{
    QStringList strokes;
    for (const InkStroke& stroke : itemsOf<InkStroke>(ink)) {
        if (!stroke.onScreenOnly)
            strokes.append(described(stroke.rect.topLeft(), stroke.rect.bottomRight()));
    }
    return strokes;
}
