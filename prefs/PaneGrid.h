#pragma once

class QGridLayout;

/// Arranges a pane's grid: labels in the first column, with the same width in all panes, and controls beside them. With
/// large fonts, controls that do not fit are placed below their labels. The width is the pane's, in points.
void arrangePaneGrid(QGridLayout& grid, int width);
