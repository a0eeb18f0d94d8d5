#include "service/ServiceCommandLine.h"

using namespace std::string_literals;

std::expected<ServiceCommandLine, std::string> parseCommandLine(const QList<QByteArray>& arguments)
{
    constexpr QByteArrayView simulate("--simulate");
    constexpr QByteArrayView simulateWithCard("--simulate=");
    ServiceCommandLine line;
    for (auto argument = arguments.cbegin(); argument != arguments.cend(); ++argument) {
        if (*argument == "--help" || *argument == "-h")
            return ServiceCommandLine{.action = ServiceCommandLine::Action::ShowHelp, .simulatedCard = {}};
        if (*argument == "--version" || *argument == "-v")
            return ServiceCommandLine{.action = ServiceCommandLine::Action::ShowVersion, .simulatedCard = {}};
        if (*argument == "--diagnose") {
            if (arguments.size() > 1)
                return std::unexpected("--diagnose s’emploie seul"s);
            return ServiceCommandLine{.action = ServiceCommandLine::Action::Diagnose, .simulatedCard = {}};
        }
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
    return "Utilisation : com.morvel.lvit [--simulate CARTE.xml | --diagnose]\n"
           "Service de lecture des cartes Vitale, lancé par Pelmora, qui lui parle par son entrée et sa sortie "
           "standard.\n"
           "\n"
           "  --simulate CARTE.xml  simule un lecteur dont la carte est ce fichier\n"
           "  --diagnose            dit quels lecteurs et quelles bibliothèques de lecture sont trouvés, et ce qui "
           "manque,\n"
           "                        sans lire de carte ; se termine par 0 si Pelmora peut lire, 1 sinon\n"
           "  --help                affiche cette aide\n"
           "  --version             affiche la version\n";
}
