#pragma once

class QGridLayout;

/// Arranges a pane's grid: labels in its first column, as wide in all panes, the controls beside them. Where the user
/// has chosen letters so large that the controls do not fit there, each stands below its label. The width is the
/// pane's, in points.
void arrangePaneGrid(QGridLayout& grid, int width);
