#include "service/embedded/CardFileList.h"

#include <algorithm>
#include <ranges>

using namespace Qt::StringLiterals;

namespace {

/// Collects files to read, each once, those of an application together.
class FileList
{
public:
    void add(const CardFileToRead& file)
    {
        const auto same = std::ranges::find(m_files, file.id, &CardFileToRead::id);
        if (same != m_files.end()) {
            same->required = same->required || file.required;
            return;
        }
        const auto last = std::ranges::find_if(m_files | std::views::reverse, [&file](const CardFileToRead& other) {
            return other.id.application == file.id.application;
        });
        m_files.insert(last == m_files.rend() ? m_files.end() : last.base(), file);
    }

    [[nodiscard]] std::vector<CardFileToRead> take() { return std::move(m_files); }

private:
    std::vector<CardFileToRead> m_files;
};

} // namespace

std::vector<CardFileToRead> firstCardFiles(const CardMap& map)
{
    std::vector<CardFileToRead> files;
    const auto add = [&map, &files](const CardFileId& id) {
        const auto known = std::ranges::find(map.files, id, &CardFile::id);
        files.push_back({id, known->required || map.identity.size() == 1 || id == map.pointers, known->name});
    };
    std::ranges::for_each(map.identity, add);
    if (map.pointers && std::ranges::find(map.identity, *map.pointers) == map.identity.end())
        add(*map.pointers);
    return files;
}

std::expected<std::vector<PointedFile>, CardGap> pointedCardFiles(const CardMap& map, const CardContent& content)
{
    if (!map.pointers)
        return std::vector<PointedFile>();
    std::expected<std::vector<PointedFile>, QString> files = std::unexpected(u"la carte le refuse"_s);
    if (const auto found = content.find(*map.pointers); found != content.end())
        files = parsePointersFile(found->second);
    if (!files)
        return std::unexpected(CardGap{CardGap::Kind::Damaged, u"fichier des pointeurs : %1"_s.arg(files.error()), {}});
    return *std::move(files);
}

std::optional<CardFileId> cardFileId(const CardFile& file, const std::vector<PointedFile>& pointed)
{
    if (file.id)
        return file.id;
    const auto found = std::ranges::find(pointed, file.pointer, &PointedFile::name);
    return found == pointed.end() ? std::nullopt : std::optional(found->id);
}

std::expected<std::vector<CardFileToRead>, CardGap> otherCardFiles(const CardMap& map, const CardContent& content)
{
    const auto pointed = pointedCardFiles(map, content);
    if (!pointed)
        return std::unexpected(pointed.error());

    FileList list;
    for (const CardFile& file : map.files) {
        const std::optional<CardFileId> id = cardFileId(file, *pointed);
        if (id)
            list.add({*id, file.required, file.name});
        else if (file.required)
            return std::unexpected(
                CardGap{CardGap::Kind::Damaged, u"la carte ne désigne pas le fichier « %1 »"_s.arg(file.name), {}});
    }
    if (map.wantsAllPointed()) {
        for (const PointedFile& file : *pointed)
            list.add({file.id, false, {}});
    }
    std::vector<CardFileToRead> files = list.take();
    const std::vector<CardFileToRead> known = firstCardFiles(map);
    std::erase_if(files, [&known](const CardFileToRead& file) {
        return std::ranges::find(known, file.id, &CardFileToRead::id) != known.end();
    });
    return files;
}

QString cardFileNumber(const CardFileId& id)
{
    return u"%1"_s.arg(id.file, 4, 16, QLatin1Char('0')).toUpper();
}
