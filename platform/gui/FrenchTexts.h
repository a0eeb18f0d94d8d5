#pragma once

/// Makes the texts of Qt's own dialogs and the numbers and dates of its controls French, as all of Pelmora is, whatever
/// the session's language. Where Qt's translations are not installed its texts stay English. Call it once the
/// application object exists, before the first window.
void installFrenchTexts();
