// A session manager for X11's protocol of that name, for one test: each client that comes is asked to save
// itself, and what it says of being started again is written to standard output. The first line is the
// address for SESSION_MANAGER. It ends its clients when its standard input ends.

#include <X11/ICE/ICElib.h>
#include <X11/ICE/ICEutil.h>
#include <X11/SM/SMlib.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <span>
#include <vector>

namespace {

struct Client {
    IceConn connection = nullptr;
    SmsConn session = nullptr;
};
std::vector<Client> clients; // NOLINT(cppcoreguidelines-avoid-non-const-global-variables)

Bool letIn(char * /*host*/)
{
    return True;
}

Status registerClient(SmsConn session, SmPointer /*data*/, char *previous)
{
    SmsRegisterClientReply(session, SmsGenerateClientID(session));
    if (previous == nullptr)
        SmsSaveYourself(session, SmSaveLocal, False, SmInteractStyleNone, False);
    std::free(previous);
    return 1;
}

void requestInteraction(SmsConn /*session*/, SmPointer /*data*/, int /*kind*/) { }
void endInteraction(SmsConn /*session*/, SmPointer /*data*/, Bool /*cancels*/) { }
void requestSave(SmsConn /*session*/, SmPointer /*data*/, int /*kind*/, Bool /*isEnd*/, int /*style*/,
    Bool /*isFast*/, Bool /*isForAll*/)
{
}
void deleteProperties(SmsConn /*session*/, SmPointer /*data*/, int /*count*/, char ** /*names*/) { }

void requestSecondPhase(SmsConn session, SmPointer /*data*/)
{
    SmsSaveYourselfPhase2(session);
}

void endSave(SmsConn session, SmPointer /*data*/, Bool isSaved)
{
    std::cout << "saved " << isSaved << std::endl;
    SmsSaveComplete(session);
}

void setProperties(SmsConn /*session*/, SmPointer /*data*/, int count, SmProp **properties)
{
    for (SmProp *const property : std::span(properties, static_cast<std::size_t>(count))) {
        if (std::strcmp(property->name, SmRestartStyleHint) == 0)
            std::cout << "restart " << int{*static_cast<unsigned char *>(property->vals[0].value)}
                      << std::endl;
        SmFreeProperty(property);
    }
    std::free(properties);
}

void getProperties(SmsConn session, SmPointer /*data*/)
{
    SmsReturnProperties(session, 0, nullptr);
}

void forget(IceConn connection)
{
    std::erase_if(clients, [connection](const Client &client) { return client.connection == connection; });
    IceSetShutdownNegotiation(connection, False);
    IceCloseConnection(connection);
    std::cout << "closed" << std::endl;
}

void close(SmsConn session, SmPointer /*data*/, int count, char **reasons)
{
    SmFreeReasons(count, reasons);
    const IceConn connection = SmsGetIceConnection(session);
    SmsCleanUp(session);
    forget(connection);
}

Status begin(
    SmsConn session, SmPointer /*data*/, unsigned long *mask, SmsCallbacks *callbacks, char ** /*reason*/)
{
    for (Client &client : clients) {
        if (client.connection == SmsGetIceConnection(session))
            client.session = session;
    }
    *mask = SmsRegisterClientProcMask | SmsInteractRequestProcMask | SmsInteractDoneProcMask
        | SmsSaveYourselfRequestProcMask | SmsSaveYourselfP2RequestProcMask | SmsSaveYourselfDoneProcMask
        | SmsCloseConnectionProcMask | SmsSetPropertiesProcMask | SmsDeletePropertiesProcMask
        | SmsGetPropertiesProcMask;
    callbacks->register_client.callback = registerClient;
    callbacks->interact_request.callback = requestInteraction;
    callbacks->interact_done.callback = endInteraction;
    callbacks->save_yourself_request.callback = requestSave;
    callbacks->save_yourself_phase2_request.callback = requestSecondPhase;
    callbacks->save_yourself_done.callback = endSave;
    callbacks->close_connection.callback = close;
    callbacks->set_properties.callback = setProperties;
    callbacks->delete_properties.callback = deleteProperties;
    callbacks->get_properties.callback = getProperties;
    return 1;
}

bool isReadable(const pollfd &watched)
{
    return watched.revents != 0;
}

} // namespace

int main()
{
    std::array<char, 256> error{};
    int count = 0;
    IceListenObj *all = nullptr;
    if (SmsInitialize("test", "1", begin, nullptr, letIn, int{error.size()}, error.data()) == 0
        || IceListenForConnections(&count, &all, int{error.size()}, error.data()) == 0) {
        std::cerr << error.data() << '\n';
        return 1;
    }
    const std::span listeners(all, static_cast<std::size_t>(count));
    for (IceListenObj listener : listeners)
        IceSetHostBasedAuthProc(listener, letIn);
    std::cout << IceComposeNetworkIdList(count, all) << std::endl;

    pollfd input{.fd = STDIN_FILENO, .events = POLLIN, .revents = 0};
    while (true) {
        std::vector<pollfd> watched{input};
        for (IceListenObj listener : listeners)
            watched.push_back({.fd = IceGetListenConnectionNumber(listener), .events = POLLIN, .revents = 0});
        const std::vector<Client> known = clients;
        for (const Client &client : known)
            watched.push_back({.fd = IceConnectionNumber(client.connection), .events = POLLIN, .revents = 0});
        if (::poll(watched.data(), watched.size(), -1) < 0)
            return 1;
        std::array<char, 16> ignored{};
        if (isReadable(watched[0]) && ::read(STDIN_FILENO, ignored.data(), ignored.size()) <= 0) {
            input.fd = -1;
            for (const Client &client : known)
                SmsDie(client.session);
        }
        for (std::size_t i = 0; i < listeners.size(); ++i) {
            IceAcceptStatus status = IceAcceptSuccess;
            IceConn connection
                = isReadable(watched[1 + i]) ? IceAcceptConnection(listeners[i], &status) : nullptr;
            if (connection != nullptr)
                clients.push_back({.connection = connection, .session = nullptr});
        }
        for (std::size_t i = 0; i < known.size(); ++i) {
            if (!isReadable(watched[1 + listeners.size() + i]))
                continue;
            IceConn connection = known[i].connection;
            if (IceProcessMessages(connection, nullptr, nullptr) == IceProcessMessagesIOError)
                forget(connection);
        }
    }
}
