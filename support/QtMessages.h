#pragma once

/// From now on, what Qt itself has to say goes to the logger: developers' remarks do not reach a terminal at the
/// counter. Only what is critical is above the debug level. Called once, first thing in main.
void sendQtMessagesToLog();
