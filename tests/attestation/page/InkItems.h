#pragma once

#include "attestation/page/PageInk.h"

#include <QList>
#include <QPointF>
#include <QStringList>

#include <variant>

/// The items of one kind, in the ink's order.
template <typename Item>
QList<Item> itemsOf(const PageInk& ink)
{
    QList<Item> items;
    for (const InkItem& item : ink) {
        if (const Item* wanted = std::get_if<Item>(&item))
            items.append(*wanted);
    }
    return items;
}

[[nodiscard]] QList<InkText> textsOf(const PageInk& ink);

/// The place of the first text that equals the given one; `nowhere`, far outside the page, when no text does.
[[nodiscard]] QPointF placeOf(const PageInk& ink, const QString& text);
inline constexpr QPointF nowhere{-1000, -1000};

[[nodiscard]] double widthOf(const InkText& text);
[[nodiscard]] double rightOf(const InkText& text);

/// Whether two lengths are the same to a hundredth of a point.
[[nodiscard]] bool isClose(double left, double right);

/// Two places as "x y x y".
[[nodiscard]] QString described(const QPointF& from, const QPointF& to);

/// The two ends of each rule; two corners of each outline, except the screen's border.
[[nodiscard]] QStringList rulesOf(const PageInk& ink);
[[nodiscard]] QStringList strokesOf(const PageInk& ink);
