#pragma once

#include <QDateTime>
#include <qpdf/QPDFObjectHandle.hh>

class QPDF;

/// Puts into the document what it says of itself: its title, the program that made it and when, its language, the
/// standards that it keeps, and the colour space that its colours are meant in. Nothing of a card.
void describeDocument(QPDF& document, const QDateTime& time);
