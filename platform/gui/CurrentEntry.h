#pragma once

class QComboBox;

/// Tells screen readers which entry of the box is the current one, which Qt 6.4 does not.
void tellCurrentEntry(QComboBox& box);
