#pragma once

/// Makes Qt's own dialogs, numbers and dates French in any session. Without Qt's installed translations the dialogs
/// stay English. Called once the application object exists, before the first window.
void installFrenchTexts();
