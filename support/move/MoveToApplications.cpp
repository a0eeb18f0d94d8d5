#include "support/move/MoveToApplications.h"

#include "support/move/BundleMover.h"
#include "support/move/MoveDecision.h"
#include "support/move/MoveTexts.h"
#include "support/move/StringTable.h"

#include <algorithm>

namespace {

QString bodyOf(const MoveDecision& decision, const MoveSurroundings& surroundings, const StringTable& texts)
{
    QString body = texts.localizedString(MoveText::body);
    const bool isInDownloads =
        std::ranges::any_of(surroundings.downloadsFolders, [&surroundings](const QString& folder) {
            return surroundings.bundlePath.startsWith(folder);
        });
    if (decision.needsAuthorization)
        body += u' ' + texts.localizedString(MoveText::authorizationNote);
    else if (isInDownloads)
        body += u' ' + texts.localizedString(MoveText::downloadsNote);
    return body;
}

MoveQuestion questionFor(const MoveDecision& decision, const MoveSurroundings& surroundings, const StringTable& texts)
{
    return {texts.localizedString(decision.isUserFolder ? MoveText::titleInHome : MoveText::title),
            bodyOf(decision, surroundings, texts), texts.localizedString(MoveText::moveButton),
            texts.localizedString(MoveText::stayButton), texts.localizedString(MoveText::suppressionBox)};
}

} // namespace

MoveOutcome moveToApplications(const MoveSurroundings& surroundings, const MoveCommands& commands,
                               const StringTable& texts, MoveOperations& operations)
{
    const std::optional<MoveDecision> decision = decideMove(surroundings, operations);
    if (!decision)
        return MoveOutcome::Stays;

    const MoveQuestion question = questionFor(*decision, surroundings, texts);
    if (!operations.isApplicationActive())
        operations.activateApplication();
    const MoveOperations::Answer answer = operations.ask(question);
    if (!answer.isMoveChosen) {
        if (answer.isSuppressionOn)
            operations.suppressQuestion();
        return MoveOutcome::Stays;
    }

    switch (BundleMover(surroundings, *decision, commands, operations).move()) {
    case BundleMover::End::Moved:
    case BundleMover::End::Switched:
        return MoveOutcome::Ends;
    case BundleMover::End::Cancelled:
        return MoveOutcome::Stays;
    case BundleMover::End::Failed:
        operations.showAlert(texts.localizedString(MoveText::failure));
        return MoveOutcome::Stays;
    }
    return MoveOutcome::Stays;
}
