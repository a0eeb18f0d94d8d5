#pragma once

#include <span>
#include <string_view>

/// Whether a launcher can ask for that.
constexpr bool isDesktopAction(std::string_view name)
{
    return name == "lire" || name == "imprimer" || name == "dossier";
}

/// The program of libexec/pelmora that these arguments, after the first, ask for. What is wrong needs no window.
constexpr const char* programFor(std::span<const char* const> arguments)
{
    int cards = 0;
    bool onlyCardsFollow = false;
    bool isSimulated = false;
    const char* service = nullptr;
    const char* action = nullptr;
    for (std::size_t index = 1; index < arguments.size(); ++index) {
        const std::string_view word = arguments[index];
        if (onlyCardsFollow || word == "-" || !word.starts_with('-'))
            ++cards;
        else if (word == "--")
            onlyCardsFollow = true;
        else if (word == "--simulate" || word.starts_with("--simulate="))
            isSimulated = true;
        else if (word.starts_with("--card-service="))
            service = word.substr(word.find('=') + 1).data();
        else if (word == "--card-service" && index + 1 < arguments.size())
            service = arguments[++index];
        else if (word.starts_with("--action="))
            action = word.substr(word.find('=') + 1).data();
        else if (word == "--action" && index + 1 < arguments.size())
            action = arguments[++index];
        else
            return "pelmora-cards";
    }
    const std::string_view name = service == nullptr ? "none" : service;
    const bool isActionWrong = action != nullptr && (cards > 0 || !isDesktopAction(action));
    const bool isWrong =
        cards > 1 || isActionWrong || (isSimulated && service != nullptr) || name.empty() || name.starts_with("--");
    return isWrong ? "pelmora-cards" : "pelmora-window";
}
