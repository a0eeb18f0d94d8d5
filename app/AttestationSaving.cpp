#include "app/AttestationSaving.h"

#include "app/FrontWindow.h"
#include "app/WritingDesk.h"
#include "app/cards/AttestationFiles.h"
#include "app/models/DebugCopy.h"
#include "app/windows/CardPanel.h"
#include "app/windows/MainWindow.h"
#include "attestation/page/PageOptions.h"
#include "card/PelmoraError.h"
#include "prefs/settings/MVSettings.h"
#include "support/MXLog.h"

using namespace Qt::StringLiterals;

AttestationSaving::AttestationSaving(const Surroundings& surroundings)
    : m_with(surroundings)
{
}

QString AttestationSaving::folder() const
{
    return MVSettings::stringPreferencesForKey(m_with.settings, Settings::attestationsFolder).value_or(QString());
}

QString AttestationSaving::pathFor(const CardRecord& record) const
{
    return folder() + u'/' + AttestationFiles::fileName(record);
}

void AttestationSaving::save(const CardRecord& record)
{
    const AttestationDocument document =
        AttestationFiles(folder(), pageOptions(m_with.settings), m_with.logos, m_with.fonts).document(record);
    m_with.writing.write([this, document]() -> std::function<void()> {
        return [this, result = AttestationFiles::write(document)] { finishSave(result); };
    });
}

void AttestationSaving::finishSave(const std::expected<QString, SaveFailure>& result)
{
    CardPanel& panel = m_with.front.window().panel();
    panel.setSaveFailure(result ? QString() : result.error().panelText());
    if (!result)
        m_with.writing.stayAfterFailedSave();
    if (!result && result.error().kind == SaveFailure::Kind::FolderUnusable) {
        m_with.front.alertUser();
        return;
    }
    if (!result && result.error().kind == SaveFailure::Kind::NoDocument) {
        m_with.front.presentError(PelmoraError::writeError());
        return;
    }

    // Also reported for a file that could not be written; the warning follows.
    Q_EMIT saved(result ? *result : result.error().path);
    m_with.front.bringBack();
    const AlertText success{u"Enregistrement de l'attestation"_s, u"L'attestation a bien été enregistrée."_s};
    if (result) {
        panel.setSaved(*result);
        m_with.front.alerts().presentMessage(success.title, success.text);
        return;
    }
    // The path contains the patient's name and is not logged.
    MXLog::logError("The attestation was not written: {}", result.error().write.reason);
    m_with.front.alerts().presentMessageThenWarning(
        success, {u"L’attestation n’est pas enregistrée"_s, result.error().alertText()});
}

void AttestationSaving::saveXMLIfNeeded(const std::optional<CardRecord>& record)
{
    if (!isDebugCopyWanted(m_with.settings, record))
        return;
    m_with.writing.write([record = *record, folder = folder()]() -> std::function<void()> {
        writeDebugCopy(record, folder);
        return [] {};
    });
}
