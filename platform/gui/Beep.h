#pragma once

/// The desktop's alert sound. Main thread, with an application.
void beep();
