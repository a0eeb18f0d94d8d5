#pragma once

/// Keeps CUPS out of what Qt does on this thread, as if no server were there, for as long as it lives. Qt's print
/// dialog waits for the server on the interface thread, for minutes if need be. A thread that has used CUPS once does
/// not look at the environment any more, so that no variable does the same.
class WithoutPrintServer
{
public:
    WithoutPrintServer() { setServer("/nonexistent/cups.sock"); }
    ~WithoutPrintServer() { setServer(nullptr); }
    WithoutPrintServer(const WithoutPrintServer&) = delete;
    WithoutPrintServer& operator=(const WithoutPrintServer&) = delete;

private:
    static void setServer(const char* server);
};
