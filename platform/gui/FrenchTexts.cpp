#include "platform/gui/FrenchTexts.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

#include <algorithm>
#include <array>
#include <memory>
#include <string_view>

using namespace Qt::StringLiterals;

namespace {

struct Text
{
    std::string_view context;
    std::string_view english;
    QStringView french;
};

// Texts of the used dialogs that are missing in Qt's French translation.
constexpr std::array missingTexts{
    Text{"QPrintSettingsOutput", "Double Sided Printing", u"Impression recto verso"},
    Text{"QPrintSettingsOutput", "Off", u"Non"},
    Text{"QPrintSettingsOutput", "Long side binding", u"Reliure sur le grand côté"},
    Text{"QPrintSettingsOutput", "Short side binding", u"Reliure sur le petit côté"},
    Text{"QPrintPropertiesWidget", "Page Setup", u"Mise en page"},
    Text{"QPrintPropertiesDialog", "Page Setup", u"Mise en page"},
    Text{"QPageSetupDialog", "Page Setup", u"Mise en page"},
    Text{"QPrintPropertiesDialog", "Printer Properties", u"Propriétés de l’imprimante"},
    Text{"QPrintPropertiesWidget", "Printer Properties", u"Propriétés de l’imprimante"},
    Text{"QPrintPropertiesDialog", "Advanced", u"Avancé"},
    Text{"QPrintPropertiesWidget", "Advanced", u"Avancé"},
    Text{"QPrintPropertiesDialog", "Page Setup Conflicts", u"Mise en page impossible"},
    Text{"QPrintPropertiesDialog", "Advanced Option Conflicts", u"Options incompatibles"},
    Text{"QPrintPropertiesDialog", "There are conflicts in page setup options. Do you want to fix them?",
         u"Certains choix de mise en page s’excluent. Voulez-vous les corriger ?"},
    Text{"QPrintPropertiesDialog", "There are conflicts in some advanced options. Do you want to fix them?",
         u"Certaines options avancées s’excluent. Voulez-vous les corriger ?"},
    Text{"QPrintDialog", "Duplex Settings Conflicts", u"Recto verso impossible"},
    Text{"QPrintDialog", "There are conflicts in duplex settings. Do you want to fix them?",
         u"Le réglage recto verso ne convient pas à cette imprimante. Voulez-vous le corriger ?"},
    Text{"QPrintDialog",
         "Options 'Pages Per Sheet' and 'Page Set' cannot be used together.\nPlease turn one of those options off.",
         u"« Pages par feuille » et le choix des pages s’excluent.\nRenoncez à l’un des deux."},
    Text{"QPrintDialog", "There are conflicts in some options. Please fix them.",
         u"Certaines options s’excluent. Corrigez-les."},
    Text{"QPrintPropertiesWidget", "There are conflicts in some options. Please fix them.",
         u"Certaines options s’excluent. Corrigez-les."},
    Text{"QPrintSettingsOutput", "Pages", u"Pages"},
    Text{"QPrintSettingsOutput",
         "Specify pages or ranges separated by commas. Ranges are specified by two numbers separated by a hyphen. E.g: "
         "3,5-7,9 prints pages 3, 5, 6, 7 and 9.",
         u"Séparez les pages et les plages par des virgules ; une plage est faite de deux numéros et d’un trait "
         u"d’union. "
         u"Par exemple, 3,5-7,9 imprime les pages 3, 5, 6, 7 et 9."},
    Text{"QAbstractFileIconProvider", "Drive", u"Disque"},
    Text{"QAbstractFileIconProvider", "Folder", u"Dossier"},
    Text{"QPrintDialog", "%1 is a directory.\nPlease choose a different file name.",
         u"« %1 » est un dossier.\nChoisissez un autre nom de fichier."},
    Text{"QPrintDialog", "File %1 is not writable.\nPlease choose a different file name.",
         u"Le fichier « %1 » ne peut pas être écrit.\nChoisissez un autre nom de fichier."},
    Text{"QPrintDialog", "%1 already exists.\nDo you want to overwrite it?",
         u"« %1 » existe déjà.\nVoulez-vous le remplacer ?"},
};

class MissingTexts final : public QTranslator
{
public:
    using QTranslator::QTranslator;

    [[nodiscard]] bool isEmpty() const override { return false; }

    [[nodiscard]] QString translate(const char* context, const char* sourceText, const char* /*disambiguation*/,
                                    int /*n*/) const override
    {
        const auto* const text = std::ranges::find_if(missingTexts, [context, sourceText](const Text& candidate) {
            return candidate.english == sourceText && candidate.context == context;
        });
        return text == missingTexts.end() ? QString() : text->french.toString();
    }
};

} // namespace

void installFrenchTexts()
{
    QLocale::setDefault(QLocale(QLocale::French, QLocale::France));
    QCoreApplication* const application = QCoreApplication::instance();
    // The application owns the translators. The last one installed is asked first.
    QCoreApplication::installTranslator(new MissingTexts(application));
    auto texts = std::make_unique<QTranslator>(application);
    if (texts->load(u"qtbase_fr"_s, QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(texts.release());
}
