#include "app/models/CommandLine.h"

#include <QCommandLineParser>

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView saveOption{"save"};
constexpr QLatin1StringView printOption{"print"};
constexpr QLatin1StringView readOption{"read"};
constexpr QLatin1StringView addLauncherOption{"add-launcher"};
constexpr QLatin1StringView removeLauncherOption{"remove-launcher"};
constexpr QLatin1StringView actionOption{"action"};
constexpr QLatin1StringView jsonOption{"json"};
constexpr QLatin1StringView forceOption{"force"};
constexpr QLatin1StringView simulateOption{"simulate"};
constexpr QLatin1StringView cardServiceOption{"card-service"};
constexpr QLatin1StringView helpOption{"help"};
constexpr QLatin1StringView versionOption{"version"};

// QCommandLineParser has no optional values: "--simulate" becomes "--simulate=".
QStringList withSimulateValue(QStringList arguments)
{
    for (QString& argument : arguments) {
        if (argument == "--"_L1)
            break;
        if (argument == "--simulate"_L1)
            argument += u'=';
    }
    return arguments;
}

// An option in the place of a value. A file with such a name can be given as "./--name".
bool isOption(const QString& value)
{
    return value.startsWith("--"_L1);
}

/// What is wrong when more than one of the commands is given.
std::optional<QString> exclusion(const QCommandLineParser& parser)
{
    QStringList commands;
    for (const QLatin1StringView option :
         {saveOption, printOption, readOption, addLauncherOption, removeLauncherOption}) {
        if (parser.isSet(option))
            commands.append("--"_L1 + option);
    }
    if (commands.size() < 2)
        return std::nullopt;
    return u"les options %1 et %2 s’excluent l’une l’autre."_s.arg(commands.at(0), commands.at(1));
}

std::optional<QString> misuse(const CommandLine& command, const QCommandLineParser& parser)
{
    if (parser.isSet(simulateOption) && parser.isSet(cardServiceOption))
        return u"les options --simulate et --card-service s’excluent l’une l’autre."_s;
    if (command.cardService && (command.cardService->isEmpty() || isOption(*command.cardService)))
        return u"l’option --card-service demande le nom d’un programme."_s;
    if (const std::optional<QString> problem = exclusion(parser))
        return problem;
    if (parser.isSet(saveOption) && (command.folder.isEmpty() || isOption(command.folder)))
        return u"l’option --save demande le nom d’un dossier."_s;
    if (parser.isSet(actionOption) && !command.desktopAction)
        return u"l’option --action demande lire, imprimer ou dossier."_s;
    if (command.desktopAction && (command.action != CommandLine::Action::ShowWindow || !command.cards.isEmpty()))
        return u"l’option --action n’accompagne ni un fichier de carte, ni une autre commande."_s;
    if ((command.action == CommandLine::Action::AddLauncher || command.action == CommandLine::Action::RemoveLauncher) &&
        !command.cards.isEmpty())
        return u"un lanceur ne demande pas de fichier de carte."_s;
    if (command.isJson && command.action != CommandLine::Action::Save && command.action != CommandLine::Action::Print)
        return u"l’option --json accompagne --save ou --print."_s;
    if (command.isForced && command.action != CommandLine::Action::Read)
        return u"l’option --force accompagne --read."_s;
    if (command.action != CommandLine::Action::ShowWindow)
        return command.cards.count(CommandLine::standardInputName) > 1
                   ? std::optional(u"l’entrée standard (-) ne peut être lue qu’une fois."_s)
                   : std::nullopt;
    if (command.cards.size() > 1)
        return u"un seul fichier de carte peut être ouvert à la fois."_s;
    return std::nullopt;
}

} // namespace

std::expected<CommandLine, QString> CommandLine::parse(const QStringList& arguments)
{
    QCommandLineParser parser;
    const QString valueName = u"valeur"_s;
    parser.addOptions({
        {saveOption, QString(), valueName},
        QCommandLineOption(QString(printOption)),
        QCommandLineOption(QString(readOption)),
        QCommandLineOption(QString(addLauncherOption)),
        QCommandLineOption(QString(removeLauncherOption)),
        {actionOption, QString(), valueName},
        QCommandLineOption(QString(jsonOption)),
        QCommandLineOption(QString(forceOption)),
        {simulateOption, QString(), valueName},
        {cardServiceOption, QString(), valueName},
        QCommandLineOption(QString(helpOption)),
        QCommandLineOption(QStringList{u"v"_s, versionOption}),
    });
    if (!parser.parse(withSimulateValue(arguments))) {
        const QStringList unknown = parser.unknownOptionNames();
        if (!unknown.isEmpty())
            return std::unexpected(u"option inconnue : %1."_s.arg(unknown.first()));
        return std::unexpected(u"la valeur d’une option manque, ou est donnée à une option qui n’en prend pas."_s);
    }

    CommandLine command;
    if (parser.isSet(helpOption)) {
        command.action = Action::ShowHelp;
        return command;
    }
    if (parser.isSet(versionOption)) {
        command.action = Action::ShowVersion;
        return command;
    }
    if (parser.isSet(saveOption))
        command.action = Action::Save;
    else if (parser.isSet(printOption))
        command.action = Action::Print;
    else if (parser.isSet(readOption))
        command.action = Action::Read;
    else if (parser.isSet(addLauncherOption))
        command.action = Action::AddLauncher;
    else if (parser.isSet(removeLauncherOption))
        command.action = Action::RemoveLauncher;
    command.folder = parser.value(saveOption);
    command.cards = parser.positionalArguments();
    command.desktopAction = desktopActionOf(parser.value(actionOption));
    command.isJson = parser.isSet(jsonOption);
    command.isForced = parser.isSet(forceOption);
    command.simulate = parser.isSet(simulateOption);
    if (const QString card = parser.value(simulateOption); !card.isEmpty())
        command.simulatedCard = card;
    if (parser.isSet(cardServiceOption))
        command.cardService = parser.value(cardServiceOption);

    if (const std::optional<QString> problem = misuse(command, parser))
        return std::unexpected(*problem);
    return command;
}

QString CommandLine::helpText()
{
    return uR"(Utilisation :
  pelmora [CARTE.xml]                     ouvre la fenêtre, avec la carte du fichier s’il est donné
  pelmora --save DOSSIER [CARTE.xml …]    enregistre l’attestation de chaque fichier de carte ou, sans fichier,
                                          de la carte présente dans le lecteur, sans ouvrir de fenêtre
  pelmora --print [CARTE.xml …]           les imprime de même sur l’imprimante par défaut
  pelmora --read [CARTE.xml …]            écrit en JSON ce que ces cartes contiennent, pour un autre programme

Un fichier de carte nommé « - » est l’entrée standard.

Options :
  --action=ACTION             ouvre la fenêtre et lit la carte (lire), l’imprime (imprimer) ou ouvre le dossier des
                              attestations (dossier)
  --json                      avec --save ou --print : écrit les résultats en JSON
  --force                     avec --read : écrit même dans un terminal
  --simulate[=CARTE.xml]      emploie un lecteur simulé, avec une carte fictive ou celle du fichier
  --card-service PROGRAMME    emploie un autre programme de service de carte
  --add-launcher, --remove-launcher
                              met la copie portable dans les menus de l’utilisateur, ou l’en retire
  --help                      affiche cette aide
  -v, --version               affiche la version

Avec --save, le chemin de chaque attestation est écrit sur la sortie standard. Avec --save, --print et --read, chaque
échec est écrit sur la sortie d’erreur.
Code de sortie : 0 si tout a été enregistré, imprimé ou lu, 1 si une carte au moins ne l’a pas été, 2 si la commande
est fautive.
)"_s;
}
