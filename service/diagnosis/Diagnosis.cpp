#include "service/diagnosis/Diagnosis.h"

#include "card/wire/ReaderModel.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

struct Line
{
    QString label;
    QString value;
};

using Lines = QList<Line>;

const QString late = u"pas de réponse : un appel reste bloqué"_s;

QString section(const QString& title, const Lines& lines)
{
    constexpr qsizetype labelWidth = 20;
    QString text = u'\n' + title + u'\n';
    for (const Line& line : lines)
        text += u"  "_s + line.label.leftJustified(labelWidth) + line.value + u'\n';
    return text;
}

bool installedIsUsed(const Diagnosis& diagnosis)
{
    return diagnosis.installed && diagnosis.installed->isOpen;
}

Lines serviceLines(const Diagnosis& diagnosis)
{
    const SocketFacts& socket = diagnosis.socket;
    Lines lines;
    if (socket.permissions.isEmpty()) {
        lines << Line{u"Socket"_s, socket.path + u" (absent)"_s};
    } else {
        const QString access = socket.isAccessible ? u"accessible"_s : u"inaccessible à ce compte"_s;
        lines << Line{u"Socket"_s, socket.path} << Line{u"Droits"_s, u"%1 (%2)"_s.arg(socket.permissions, access)};
    }
    if (!diagnosis.readers)
        lines << Line{u"État"_s, late};
    else
        lines << Line{u"État"_s, *diagnosis.readers ? u"en marche"_s : describe(diagnosis.readers->error())};
    return lines;
}

QString cardText(const ReaderState& state)
{
    const QString use = state.isKept    ? u" (un programme la garde pour lui seul : fermez-le)"_s
                        : state.isInUse ? u" (un programme s’en sert)"_s
                                        : QString();
    if (!state.hasCard)
        return u"absente"_s + use;
    return (state.isMute ? u"muette : à l’envers, encrassée ou hors d’usage"_s : u"présente"_s) + use;
}

Lines readerLines(const ReaderFacts& reader)
{
    const bool isAccepted = reader.name.model == acceptedReader;
    Lines lines{{u"Nom PC/SC"_s, QString::fromUtf8(reader.name.system)},
                {u"Carte Vitale"_s, isAccepted ? u"lecteur accepté"_s : u"lecteur non retenu"_s}};
    if (!reader.state)
        return lines << Line{u"Carte"_s, describe(reader.state.error())};
    lines << Line{u"Carte"_s, cardText(*reader.state)};
    if (!reader.state->atr.isEmpty())
        lines << Line{u"ATR"_s, QString::fromLatin1(reader.state->atr.toHex(' ').toUpper())};
    return lines;
}

QString readersText(const Diagnosis& diagnosis)
{
    if (!diagnosis.readers || !*diagnosis.readers)
        return {};
    if ((*diagnosis.readers)->isEmpty())
        return section(u"Lecteurs"_s, {{u"Aucun"_s, u"vérifiez le branchement et le pilote (pcsc_scan -r)"_s}});
    QString text;
    for (const ReaderFacts& reader : **diagnosis.readers)
        text += section(u"Lecteur « %1 »"_s.arg(reader.name.shown), readerLines(reader));
    return text;
}

QString orNone(const QString& text)
{
    return text.isEmpty() ? u"—"_s : text;
}

Lines installedLines(const Diagnosis& diagnosis)
{
    Lines lines{{u"Fichier"_s, diagnosis.installedPath}};
    if (!diagnosis.installed)
        return lines << Line{u"État"_s, late};
    const InstalledFacts& installed = *diagnosis.installed;
    if (installed.refusal)
        return lines << Line{u"État"_s,
                             installed.refusal->isAbsent ? u"absente"_s : u"refusée : "_s + installed.refusal->reason};
    if (!installed.isOpen)
        return lines << Line{u"État"_s, u"refusée : elle ne s’ouvre pas"_s};
    return lines << Line{u"État"_s, u"acceptée, sert en mode automatique"_s}
                 << Line{u"Version"_s, orNone(installed.versions.library)}
                 << Line{u"Table des cartes"_s, orNone(installed.versions.cardTable)}
                 << Line{u"Destinataires"_s, orNone(installed.versions.destinationTable)}
                 << Line{u"Habilitations"_s, orNone(installed.versions.authorisationTable)}
                 << Line{u"Lecteurs"_s, orNone(installed.readers.join(", "_L1))};
}

Lines embeddedLines(const Diagnosis& diagnosis)
{
    const bool isFirst = diagnosis.installed && !diagnosis.installed->isOpen;
    Lines lines{{u"Version"_s, diagnosis.version},
                {u"Emploi"_s, isFirst ? u"sert en mode automatique"_s : u"en mode embarqué seulement"_s}};
    // One line each; only the first one has the label.
    for (qsizetype index = 0; index < diagnosis.cardMaps.size(); ++index)
        lines << Line{index == 0 ? u"Cartes connues"_s : QString(), diagnosis.cardMaps[index]};
    for (const QString& warning : diagnosis.warnings)
        lines << Line{u"À corriger"_s, warning};
    return lines;
}

Lines protectionLines(const Diagnosis& diagnosis)
{
    Lines lines;
    for (const Protection& protection : diagnosis.protections)
        lines << Line{protection.name,
                      protection.holds() ? protection.meaning : u"indisponible (%1)"_s.arg(protection.obstacle)};
    return lines;
}

/// Whether the library of the automatic mode sees the reader.
bool hasAcceptedReader(const Diagnosis& diagnosis)
{
    if (installedIsUsed(diagnosis))
        return diagnosis.installed->readers.contains(acceptedReader);
    return diagnosis.readers && *diagnosis.readers &&
           std::ranges::any_of(**diagnosis.readers, [](const ReaderFacts& reader) {
               return reader.name.model == acceptedReader && reader.state.has_value();
           });
}

QString conclusion(const Diagnosis& diagnosis)
{
    const QString model = acceptedReader.toString();
    // In automatic mode the service calls it first, and hangs there.
    if (!diagnosis.installed)
        return u"Conclusion : la bibliothèque de lecture installée bloque la lecture, retirez-la ou choisissez le mode "
               u"embarqué."_s;
    if (!hasAcceptedReader(diagnosis))
        return u"Conclusion : Pelmora ne trouve pas de lecteur « %1 », le seul qu’il accepte."_s.arg(model);
    const QString ready = u"Conclusion : un lecteur « %1 » est prêt, "_s.arg(model);
    if (installedIsUsed(diagnosis))
        return ready + u"Pelmora peut lire une carte."_s;
    return ready + (diagnosis.cardMaps.isEmpty() ? u"mais Pelmora ne connaît aucune carte."_s
                                                 : u"Pelmora peut lire les cartes connues."_s);
}

} // namespace

bool Diagnosis::isReady() const
{
    return installed && hasAcceptedReader(*this) && (installed->isOpen || !cardMaps.isEmpty());
}

QString diagnosisText(const Diagnosis& diagnosis)
{
    return u"Pelmora %1, service de lecture : diagnostic (aucune carte n’est lue)\n"_s.arg(diagnosis.version) +
           section(u"Service PC/SC"_s, serviceLines(diagnosis)) + readersText(diagnosis) +
           section(u"Bibliothèque de lecture installée"_s, installedLines(diagnosis)) +
           section(u"Bibliothèque de lecture embarquée"_s, embeddedLines(diagnosis)) +
           section(u"Protections"_s, protectionLines(diagnosis)) + u'\n' + conclusion(diagnosis) + u'\n';
}
