#pragma once

class UserDefaults;

/// What the user chooses about the page.
struct PageOptions
{
    bool showRightLabel = false; ///< whether the document's title is drawn
};

/// The options as the settings have them now. Main thread.
[[nodiscard]] PageOptions pageOptions(const UserDefaults& settings);
