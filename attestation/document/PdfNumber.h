#pragma once

#include <QStringView>

#include <string>

/// The number as PDF writes it: at most four decimals, none that are zero at the end.
[[nodiscard]] std::string pdfNumber(double value);

/// Four hexadecimal digits: of a code, and of each UTF-16 unit of a text.
[[nodiscard]] std::string hexadecimal(unsigned code);
[[nodiscard]] std::string hexadecimal(QStringView text);

/// The text as a string of a document.
[[nodiscard]] std::string pdfString(QStringView text);
