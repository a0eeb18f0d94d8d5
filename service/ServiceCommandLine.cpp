#include "service/ServiceCommandLine.h"

#include <algorithm>
#include <array>

using namespace std::string_literals;

namespace {

using Action = ServiceCommandLine::Action;

ServiceCommandLine lineOf(Action action)
{
    ServiceCommandLine line;
    line.action = action;
    return line;
}

/// An action that is used alone, or with files after it.
struct Command
{
    QByteArrayView name;
    Action action = {};
    const char* complaint = nullptr; // about other arguments
};

constexpr std::array loneCommands{
    Command{"--diagnose", Action::Diagnose, "--diagnose s’emploie seul"},
    Command{"--check-library", Action::CheckLibrary, "--check-library demande un fichier, et rien d’autre"},
    Command{"--check-map", Action::CheckMap, "--check-map demande un fichier, puis --card DOSSIER ou rien"},
};

std::expected<ServiceCommandLine, std::string> parseCommand(const Command& command, const QList<QByteArray>& arguments)
{
    ServiceCommandLine line = lineOf(command.action);
    const qsizetype files = command.action == Action::Diagnose ? 0 : 1;
    const bool hasCard = command.action == Action::CheckMap && arguments.size() == 4 && arguments[2] == "--card";
    if (arguments.front() != command.name || (arguments.size() != 1 + files && !hasCard) || arguments.contains(""))
        return std::unexpected(command.complaint);
    if (files > 0)
        line.checkedFile = arguments[1];
    if (hasCard)
        line.recordedCard = arguments.last();
    return line;
}

} // namespace

std::expected<ServiceCommandLine, std::string> parseCommandLine(const QList<QByteArray>& arguments)
{
    constexpr QByteArrayView simulate("--simulate");
    constexpr QByteArrayView simulateWithCard("--simulate=");
    ServiceCommandLine line;
    for (auto argument = arguments.cbegin(); argument != arguments.cend(); ++argument) {
        if (*argument == "--help" || *argument == "-h")
            return lineOf(Action::ShowHelp);
        if (*argument == "--version" || *argument == "-v")
            return lineOf(Action::ShowVersion);
        if (const auto* command = std::ranges::find(loneCommands, QByteArrayView(*argument), &Command::name);
            command != loneCommands.end())
            return parseCommand(*command, arguments);
        if (line.simulatedCard)
            return std::unexpected("trop d’arguments"s);
        if (*argument == simulate) {
            ++argument;
            line.simulatedCard = argument == arguments.cend() ? QByteArray() : *argument;
        } else if (argument->startsWith(simulateWithCard)) {
            line.simulatedCard = argument->sliced(simulateWithCard.size());
        } else {
            return std::unexpected("argument inconnu : "s + argument->constData());
        }
        if (line.simulatedCard->isEmpty())
            return std::unexpected("--simulate demande le fichier XML d’une carte"s);
    }
    return line;
}

std::string helpText()
{
    return "Utilisation : com.morvel.lvit [--simulate CARTE.xml | --diagnose | --check-library FICHIER.so |\n"
           "                               --check-map FICHIER.json [--card DOSSIER]]\n"
           "Service de lecture des cartes Vitale, lancé par Pelmora, qui lui parle par son entrée et sa sortie "
           "standard.\n"
           "\n"
           "  --simulate CARTE.xml  simule un lecteur dont la carte est ce fichier\n"
           "  --diagnose            dit quels lecteurs et quelles bibliothèques de lecture sont trouvés, et ce qui "
           "manque,\n"
           "                        sans lire de carte ; se termine par 0 si Pelmora peut lire, 1 sinon\n"
           "  --check-library FICHIER.so\n"
           "                        contrôle une bibliothèque de lecture : ouverture, versions, lecteurs, lecture de "
           "la "
           "carte\n"
           "                        du lecteur, tampons courts, 1000 tours ; se termine par 0 sans défaut, 1 sinon\n"
           "  --check-map FICHIER.json\n"
           "                        contrôle un plan de carte ; se termine par 0 sans défaut, 1 sinon\n"
           "  --card DOSSIER        lit avec ce plan une carte enregistrée : DOSSIER/APPLICATION/FICHIER, noms en\n"
           "                        hexadécimal\n"
           "  --help                affiche cette aide\n"
           "  --version             affiche la version\n";
}
