#include "attestation/page/VectorImage.h"

#include <QList>

#include <algorithm>

namespace {

/// Reads the operators, one to a line, and checks that each has its numbers.
class OutlineReader
{
public:
    // Whether the line is understood.
    [[nodiscard]] bool read(const QByteArray& line)
    {
        const QList<QByteArray> words = line.split(' ');
        const QByteArray& name = words.back();
        std::vector<double> numbers;
        for (const QByteArray& word : words.first(words.size() - 1)) {
            bool isNumber = false;
            numbers.push_back(word.toDouble(&isNumber));
            if (!isNumber)
                return false;
        }
        if (name == "rg")
            return begin(numbers);
        if (name == "f" || name == "f*")
            return end(numbers, name == "f*");
        return step(numbers, name);
    }

    // The outlines, when none is left open.
    [[nodiscard]] std::vector<FilledOutline> outlines() const
    {
        return m_isOpen ? std::vector<FilledOutline>() : m_outlines;
    }

private:
    bool begin(const std::vector<double>& numbers)
    {
        const auto isColor = [](double value) { return value >= 0 && value <= 1; };
        if (m_isOpen || numbers.size() != 3 || !std::ranges::all_of(numbers, isColor))
            return false;
        m_outlines.push_back({.color = {numbers[0], numbers[1], numbers[2]}, .isEvenOdd = false, .steps = {}});
        m_isOpen = true;
        return true;
    }

    bool end(const std::vector<double>& numbers, bool isEvenOdd)
    {
        if (!m_isOpen || !numbers.empty() || m_outlines.back().steps.empty())
            return false;
        m_outlines.back().isEvenOdd = isEvenOdd;
        m_isOpen = false;
        return true;
    }

    bool step(const std::vector<double>& numbers, const QByteArray& name)
    {
        struct Operator
        {
            const char* name;
            OutlineStep::Kind kind;
            std::size_t points;
        };
        static constexpr std::array operators{
            Operator{"m", OutlineStep::Kind::Move, 1},
            Operator{"l", OutlineStep::Kind::Line, 1},
            Operator{"c", OutlineStep::Kind::Curve, 3},
            Operator{"h", OutlineStep::Kind::Close, 0},
        };
        const auto* const known =
            std::ranges::find_if(operators, [&name](const Operator& candidate) { return name == candidate.name; });
        if (!m_isOpen || known == operators.end() || numbers.size() != known->points * 2)
            return false;
        std::vector<OutlineStep>& steps = m_outlines.back().steps;
        if (steps.empty() && known->kind != OutlineStep::Kind::Move)
            return false;
        OutlineStep& added = steps.emplace_back(OutlineStep{.kind = known->kind, .points = {}});
        for (std::size_t i = 0; i < known->points; ++i)
            added.points[i] = {numbers[2 * i], numbers[2 * i + 1]};
        return true;
    }

    std::vector<FilledOutline> m_outlines;
    bool m_isOpen = false; // the last outline is not filled yet
};

} // namespace

// The first line: width, height, number of outlines, title.
std::optional<VectorImage> VectorImage::parsed(const QByteArray& file)
{
    constexpr qsizetype numbers = 3;
    const qsizetype endOfHead = file.indexOf('\n');
    const QList<QByteArray> head = file.first(std::max<qsizetype>(endOfHead, 0)).split(' ');
    if (head.size() <= numbers || !file.endsWith('\n') || endOfHead + 1 == file.size())
        return std::nullopt;

    VectorImage image;
    image.size = {head[0].toDouble(), head[1].toDouble()};
    image.title = QString::fromUtf8(head.sliced(numbers).join(' '));
    image.operators = file.sliced(endOfHead + 1);

    OutlineReader reader;
    for (const QByteArray& line : image.operators.chopped(1).split('\n')) {
        if (!reader.read(line))
            return std::nullopt;
    }
    image.outlines = reader.outlines();
    const bool isWhole =
        !image.size.isEmpty() && !image.outlines.empty() && image.outlines.size() == head[2].toULongLong();
    return isWhole ? std::optional(std::move(image)) : std::nullopt;
}
