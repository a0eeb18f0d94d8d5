#pragma once

/// Switches core dumps off for this process and its children: memory holds patients' data. Called first thing in main.
void disableCoreDumps();
