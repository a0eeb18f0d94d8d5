#pragma once

/// Sends Qt's own messages to the logger instead of the terminal: critical and fatal ones as errors, others at debug
/// level. Called once, first in main.
void sendQtMessagesToLog();
