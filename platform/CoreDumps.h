#pragma once

/// Switches core dumps off for this process and its children, whose memory has patients' data. Called first in main.
void disableCoreDumps();
