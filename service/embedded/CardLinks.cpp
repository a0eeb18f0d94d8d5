#include "service/embedded/CardLinks.h"

#include "service/embedded/CardElements.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// The link's value; absent unless there is exactly one.
std::optional<QByteArrayView> linkOf(const TlvObject& record, const TagPath& path)
{
    const CardRecords found = findTlv(record.children, path);
    return found.size() == 1 ? std::optional(found.front()->value) : std::nullopt;
}

bool tellsQuality(const CardRecordSource& source)
{
    return std::ranges::find(source.fields, CardElements::quality, &CardField::path) != source.fields.end();
}

} // namespace

std::expected<CardRecords, QString> linkedRecords(const CardRecordSource& source, const CardRecords& records,
                                                  const CardRecords& beneficiaries)
{
    CardRecords linked(beneficiaries.size(), nullptr);
    for (std::size_t index = 0; index < records.size(); ++index) {
        const auto refuse = [index](const QString& reason) {
            return std::unexpected(u"enregistrement %1 : %2"_s.arg(index + 1).arg(reason));
        };
        const std::optional<QByteArrayView> own = linkOf(*records[index], source.link->own);
        if (!own)
            return refuse(u"rien ne dit de quel bénéficiaire il est"_s);
        int found = 0;
        for (std::size_t number = 0; number < beneficiaries.size(); ++number) {
            if (linkOf(*beneficiaries[number], source.link->beneficiary) != own)
                continue;
            if (linked[number] != nullptr)
                return refuse(u"le bénéficiaire %1 en a déjà un"_s.arg(number + 1));
            linked[number] = records[index];
            ++found;
        }
        if (found == 0)
            return refuse(u"il n’est d’aucun bénéficiaire"_s);
        if (found > 1 && tellsQuality(source))
            return refuse(u"il est de plusieurs bénéficiaires"_s);
    }
    return linked;
}
