// An X11 session manager that can end its clients. It prints its address, then "client" for each program that joins the
// session. The line of input "checkpoint" asks all clients to save their state; "end" asks them to save it and to exit.
#include <cstdio>
#include <cstdlib>
#include <span>
#include <string>
#include <vector>

#include <X11/ICE/ICElib.h>
#include <X11/SM/SMlib.h>
#include <poll.h>
#include <unistd.h>

// Session managers use it to refuse network connections. No header of the library declares it.
extern "C" int _IceTransNoListen(const char* protocol); // NOLINT(bugprone-reserved-identifier)

namespace {

/// The session, which the library's callbacks share.
struct Session
{
    std::vector<SmsConn> clients;
    bool isEnding = false;
};

[[noreturn]] void fail(const char* reason)
{
    std::fprintf(stderr, "session-manager: %s\n", reason);
    std::exit(1);
}

void say(const char* text)
{
    std::puts(text);
    std::fflush(stdout);
}

void askToSave(SmsConn client, bool isEnd)
{
    SmsSaveYourself(client, SmSaveBoth, isEnd ? True : False, SmInteractStyleNone, False);
}

// The callbacks for messages of clients.

Status registerClient(SmsConn client, SmPointer /*session*/, char* previousId)
{
    SmsRegisterClientReply(client, previousId != nullptr ? previousId : SmsGenerateClientID(client));
    // The protocol requires this for a new client.
    SmsSaveYourself(client, SmSaveLocal, False, SmInteractStyleNone, False);
    std::free(previousId);
    say("client");
    return 1;
}

void saveYourselfDone(SmsConn client, SmPointer session, Bool /*success*/)
{
    if (static_cast<Session*>(session)->isEnding)
        SmsDie(client);
    else
        SmsSaveComplete(client);
}

void closeConnection(SmsConn client, SmPointer session, int count, char** reasons)
{
    std::erase(static_cast<Session*>(session)->clients, client);
    SmFreeReasons(count, reasons);
    IceConn connection = SmsGetIceConnection(client);
    SmsCleanUp(client);
    IceSetShutdownNegotiation(connection, False);
    IceCloseConnection(connection);
}

void setProperties(SmsConn /*client*/, SmPointer /*session*/, int count, SmProp** properties)
{
    for (SmProp* property : std::span(properties, static_cast<std::size_t>(count)))
        SmFreeProperty(property);
    std::free(properties);
}

void deleteProperties(SmsConn /*client*/, SmPointer /*session*/, int count, char** names)
{
    for (char* name : std::span(names, static_cast<std::size_t>(count)))
        std::free(name);
    std::free(names);
}

void getProperties(SmsConn client, SmPointer /*session*/)
{
    SmsReturnProperties(client, 0, nullptr);
}

void ignore(SmsConn /*client*/, SmPointer /*session*/)
{
}
void interactRequest(SmsConn client, SmPointer /*session*/, int /*type*/)
{
    SmsInteract(client);
}
void interactDone(SmsConn /*client*/, SmPointer /*session*/, Bool /*cancel*/)
{
}
void saveYourselfRequest(SmsConn /*client*/, SmPointer /*session*/, int /*type*/, Bool /*shutdown*/, int /*style*/,
                         Bool /*fast*/, Bool /*global*/)
{
}

Status newClient(SmsConn client, SmPointer session, unsigned long* mask, SmsCallbacks* callbacks, char** /*reason*/)
{
    static_cast<Session*>(session)->clients.push_back(client);
    *mask = SmsRegisterClientProcMask | SmsInteractRequestProcMask | SmsInteractDoneProcMask |
            SmsSaveYourselfRequestProcMask | SmsSaveYourselfP2RequestProcMask | SmsSaveYourselfDoneProcMask |
            SmsCloseConnectionProcMask | SmsSetPropertiesProcMask | SmsDeletePropertiesProcMask |
            SmsGetPropertiesProcMask;
    callbacks->register_client = {registerClient, session};
    callbacks->interact_request = {interactRequest, session};
    callbacks->interact_done = {interactDone, session};
    callbacks->save_yourself_request = {saveYourselfRequest, session};
    callbacks->save_yourself_phase2_request = {ignore, session};
    callbacks->save_yourself_done = {saveYourselfDone, session};
    callbacks->close_connection = {closeConnection, session};
    callbacks->set_properties = {setProperties, session};
    callbacks->delete_properties = {deleteProperties, session};
    callbacks->get_properties = {getProperties, session};
    return 1;
}

Bool isWelcome(char* /*host*/)
{
    return True;
}

void forgetBrokenConnection(IceConn /*connection*/)
{
}

} // namespace

int main()
{
    Session session;
    std::string reason(256, '\0');
    if (SmsInitialize("Pelmora tests", "1", newClient, &session, isWelcome, static_cast<int>(reason.size()),
                      reason.data()) == 0)
        fail(reason.c_str());
    _IceTransNoListen("tcp");
    int count = 0;
    IceListenObj* listeners = nullptr;
    if (IceListenForConnections(&count, &listeners, static_cast<int>(reason.size()), reason.data()) == 0)
        fail(reason.c_str());
    IceSetIOErrorHandler(forgetBrokenConnection);
    for (IceListenObj listener : std::span(listeners, static_cast<std::size_t>(count)))
        IceSetHostBasedAuthProc(listener, isWelcome);
    say(IceComposeNetworkIdList(count, listeners));

    std::vector<IceConn> connections;
    while (true) {
        std::vector<pollfd> set{{.fd = STDIN_FILENO, .events = POLLIN, .revents = 0}};
        for (IceListenObj listener : std::span(listeners, static_cast<std::size_t>(count)))
            set.push_back({.fd = IceGetListenConnectionNumber(listener), .events = POLLIN, .revents = 0});
        for (IceConn connection : connections)
            set.push_back({.fd = IceConnectionNumber(connection), .events = POLLIN, .revents = 0});
        poll(set.data(), set.size(), -1);

        if (set[0].revents != 0) {
            std::string line(64, '\0');
            if (std::fgets(line.data(), static_cast<int>(line.size()), stdin) == nullptr)
                return 0;
            session.isEnding = line.starts_with("end");
            for (SmsConn client : session.clients)
                askToSave(client, session.isEnding);
        }
        const std::vector<IceConn> known = connections;
        for (std::size_t index = 0; index < known.size(); ++index) {
            if (set[1 + static_cast<std::size_t>(count) + index].revents != 0 &&
                IceProcessMessages(known[index], nullptr, nullptr) != IceProcessMessagesSuccess)
                std::erase(connections, known[index]);
        }
        for (std::size_t index = 0; index < static_cast<std::size_t>(count); ++index) {
            IceAcceptStatus status = IceAcceptSuccess;
            if (set[1 + index].revents == 0)
                continue;
            if (IceConn connection = IceAcceptConnection(listeners[index], &status); connection != nullptr)
                connections.push_back(connection);
        }
    }
}
