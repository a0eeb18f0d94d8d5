#include "service/embedded/CardReading.h"

#include "service/embedded/CardDocument.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// Whether it comes from what a card holds, which another card in its place would explain, too.
bool isAboutContent(const CardFailure& failure)
{
    const auto* fault = std::get_if<CardFault>(&failure);
    return fault == nullptr || *fault == CardFault::CardNonsense;
}

CardGap refusalOf(const QString& what)
{
    return {CardGap::Kind::Damaged, u"la carte refuse %1"_s.arg(what), {}};
}

} // namespace

CardReading::CardReading(CardChannel& channel, const std::vector<CardMap>& maps)
    : m_channel(&channel)
    , m_files(channel)
    , m_maps(&maps)
{
}

std::expected<QString, CardFailure> CardReading::readDocument()
{
    const std::expected<const CardMap*, CardFault> map = findMap();
    if (!map) {
        const bool isUnheard = map.error() == CardFault::CardGone && !m_channel->hasAnswered();
        return std::unexpected(isUnheard ? CardFault::CardGoneUnheard : map.error());
    }
    std::expected<QString, CardFailure> document = readAlong(**map);
    // Which map was tried is what whoever completes it wants to know first.
    if (auto* gap = document ? nullptr : std::get_if<CardGap>(&document.error()))
        gap->explanation = u"plan « %1 » : %2"_s.arg((*map)->name, gap->explanation);
    return document;
}

std::expected<QString, CardFailure> CardReading::readAlong(const CardMap& map)
{
    CardContent content;
    const std::expected<void, CardFailure> read = readFiles(map, content);
    if (!read && !isAboutContent(read.error()))
        return std::unexpected(read.error());
    const std::expected<bool, CardFault> isSame = isSameCard(map, content);
    if (!isSame)
        return std::unexpected(isSame.error());
    if (!*isSame)
        return std::unexpected(CardFault::CardSwapped);
    if (!read)
        return std::unexpected(read.error());
    std::expected<QString, CardGap> document = cardDocument(map, content);
    if (!document)
        return std::unexpected(std::move(document.error()));
    return *std::move(document);
}

std::expected<const CardMap*, CardFault> CardReading::findMap()
{
    for (const CardMap& map : *m_maps) {
        const std::expected<bool, CardFault> isThere = m_files.selectApplication(map.application);
        if (!isThere)
            return std::unexpected(isThere.error());
        if (*isThere)
            return &map;
    }
    return std::unexpected(CardFault::CardOfOtherKind);
}

std::expected<void, CardFailure> CardReading::readFiles(const CardMap& map, CardContent& content)
{
    if (const auto read = readListed(firstCardFiles(map), content); !read)
        return std::unexpected(read.error());
    if (std::ranges::none_of(map.identity, [&content](const CardFileId& id) { return content.contains(id); }))
        return std::unexpected(refusalOf(u"tous les fichiers qui l’identifient"_s));
    const std::expected<std::vector<CardFileToRead>, CardGap> others = otherCardFiles(map, content);
    if (!others)
        return std::unexpected(others.error());
    if (const auto read = readListed(*others, content); !read)
        return std::unexpected(read.error());
    return {};
}

std::expected<void, CardFailure> CardReading::readListed(const std::vector<CardFileToRead>& files, CardContent& content)
{
    for (const CardFileToRead& file : files) {
        std::expected<QByteArray, CardFault> bytes = readFile(file.id);
        if (bytes)
            content.emplace(file.id, *std::move(bytes));
        else if (bytes.error() != CardFault::CardRefusal)
            return std::unexpected(bytes.error());
        else if (file.required)
            return std::unexpected(refusalOf(u"le fichier « %1 »"_s.arg(file.name)));
    }
    return {};
}

std::expected<bool, CardFault> CardReading::isSameCard(const CardMap& map, const CardContent& content)
{
    // Whatever is selected on the first card is not on another: all is selected anew, lest a refusal hides that.
    m_files.startOver();
    const std::expected<bool, CardFault> isOfSameKind = m_files.selectApplication(map.application);
    if (!isOfSameKind || !*isOfSameKind)
        return isOfSameKind;
    for (const CardFileId& id : map.identity) {
        const std::expected<QByteArray, CardFault> now = readFile(id);
        if (!now && now.error() != CardFault::CardRefusal)
            return std::unexpected(now.error());
        const auto before = content.find(id);
        const bool isSame = before == content.end() ? !now : now && *now == before->second;
        if (!isSame)
            return false;
    }
    return true;
}

std::expected<QByteArray, CardFault> CardReading::readFile(const CardFileId& id)
{
    const std::expected<bool, CardFault> isSelected = m_files.selectApplication(id.application);
    if (!isSelected)
        return std::unexpected(isSelected.error());
    if (!*isSelected)
        return std::unexpected(CardFault::CardRefusal);
    return m_files.readFile(id.file);
}
