#include "service/embedded/CardReading.h"

#include "service/embedded/CardDocument.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// Whether the fault is about the content, and could come from an exchanged card.
bool isAboutContent(CardFault fault)
{
    return fault == CardFault::CardRefusal || fault == CardFault::CardFileCut || fault == CardFault::CardNonsense;
}

bool isAboutContent(const CardFailure& failure)
{
    const auto* fault = std::get_if<CardFault>(&failure);
    return fault == nullptr || isAboutContent(*fault);
}

std::unexpected<CardFailure> damage(const QString& explanation)
{
    return std::unexpected(CardFailure(CardGap{CardGap::Kind::Damaged, explanation, {}}));
}

/// The file's name for the log.
QString nameOf(const CardFileToRead& file)
{
    return file.name.isEmpty() ? cardFileNumber(file.id) : u"« %1 »"_s.arg(file.name);
}

/// The failure for a fault while reading that file.
CardFailure failureOf(const CardFileToRead& file, CardFault fault)
{
    switch (fault) {
    case CardFault::CardRefusal:
        return CardGap{CardGap::Kind::Damaged, u"la carte refuse le fichier %1"_s.arg(nameOf(file)), {}};
    case CardFault::CardFileCut:
    case CardFault::CardNonsense:
        return CardGap{CardGap::Kind::Damaged, u"fichier %1 : %2"_s.arg(nameOf(file), describe(fault)), {}};
    default:
        return fault;
    }
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
    // Tells which map was used.
    if (auto* gap = document ? nullptr : std::get_if<CardGap>(&document.error()))
        gap->explanation = u"plan « %1 » : %2"_s.arg((*map)->name, gap->explanation);
    return document;
}

std::expected<QString, CardFailure> CardReading::readAlong(const CardMap& map)
{
    CardContent content;
    Result read = readFiles(map, content);
    if (read)
        read = readAgain(map, content);
    if (!read && !isAboutContent(read.error()))
        return std::unexpected(std::move(read.error()));
    Result isSame = confirmIdentity(map, content);
    // The first failure is reported, unless an exchanged card explains it.
    if (!isSame && (read || !isAboutContent(isSame.error())))
        return std::unexpected(std::move(isSame.error()));
    if (!read)
        return std::unexpected(std::move(read.error()));
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

CardReading::Result CardReading::readFiles(const CardMap& map, CardContent& content)
{
    if (Result read = readListed(firstCardFiles(map), content); !read)
        return read;
    if (std::ranges::none_of(map.identity, [&content](const CardFileId& id) { return content.contains(id); }))
        return damage(u"la carte refuse tous les fichiers qui l’identifient"_s);
    const std::expected<std::vector<CardFileToRead>, CardGap> others = otherCardFiles(map, content);
    if (!others)
        return std::unexpected(others.error());
    return readListed(*others, content);
}

CardReading::Result CardReading::readListed(const std::vector<CardFileToRead>& files, CardContent& content)
{
    for (const CardFileToRead& file : files) {
        Bytes bytes = readFile(file.id);
        if (bytes)
            content.emplace(file.id, *std::move(bytes));
        else if (bytes.error() != CardFault::CardRefusal || file.required)
            return std::unexpected(failureOf(file, bytes.error()));
    }
    return {};
}

CardReading::Result CardReading::readAgain(const CardMap& map, const CardContent& content)
{
    // Selects the application again, to be sure.
    m_files.startOver();
    std::expected<std::vector<CardFileToRead>, CardGap> files = otherCardFiles(map, content);
    if (!files)
        return std::unexpected(files.error());
    std::ranges::move(firstCardFiles(map), std::back_inserter(*files));
    for (const CardFileToRead& file : *files) {
        // The identity is read last.
        if (std::ranges::find(map.identity, file.id) != map.identity.end())
            continue;
        if (Result same = compare(file, content); !same)
            return same;
    }
    return {};
}

CardReading::Result CardReading::compare(const CardFileToRead& file, const CardContent& content)
{
    const Bytes now = readFile(file.id);
    if (!now && now.error() != CardFault::CardRefusal)
        return std::unexpected(failureOf(file, now.error()));
    const auto before = content.find(file.id);
    const bool wasRefused = before == content.end();
    if (!now)
        return wasRefused ? Result() : std::unexpected(failureOf(file, now.error()));
    if (wasRefused)
        return damage(u"la carte refuse le fichier %1, puis le donne"_s.arg(nameOf(file)));
    if (*now != before->second)
        return damage(u"deux lectures du fichier %1 diffèrent"_s.arg(nameOf(file)));
    return {};
}

CardReading::Result CardReading::confirmIdentity(const CardMap& map, const CardContent& content)
{
    const std::expected<Identity, CardFault> identity = identityNow(map, content);
    if (!identity)
        return std::unexpected(identity.error());
    if (*identity == Identity::Same)
        return {};
    // A single different answer may be an error; an exchanged card stays different.
    const std::expected<Identity, CardFault> again = identityNow(map, content);
    if (!again)
        return std::unexpected(again.error());
    if (*again == Identity::Other)
        return std::unexpected(CardFault::CardSwapped);
    return damage(u"deux lectures de ce qui identifie la carte diffèrent"_s);
}

std::expected<CardReading::Identity, CardFault> CardReading::identityNow(const CardMap& map, const CardContent& content)
{
    // Selects the application again: on an exchanged card it is not selected.
    m_files.startOver();
    const std::expected<bool, CardFault> isOfSameKind = m_files.selectApplication(map.application);
    if (!isOfSameKind)
        return std::unexpected(isOfSameKind.error());
    if (!*isOfSameKind)
        return Identity::Other;
    bool isClear = true;
    for (const CardFileId& id : map.identity) {
        const Bytes now = readFile(id);
        if (!now && !isAboutContent(now.error()))
            return std::unexpected(now.error());
        const auto before = content.find(id);
        if (now && before != content.end() && *now != before->second)
            return Identity::Other;
        isClear = isClear && now.has_value() == (before != content.end());
    }
    return isClear ? Identity::Same : Identity::Unclear;
}

CardReading::Bytes CardReading::readFile(const CardFileId& id)
{
    const std::expected<bool, CardFault> isSelected = m_files.selectApplication(id.application);
    if (!isSelected)
        return std::unexpected(isSelected.error());
    if (!*isSelected)
        return std::unexpected(CardFault::CardRefusal);
    return m_files.readFile(id.file);
}
