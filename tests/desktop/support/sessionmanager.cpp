#include "tests/desktop/support/sessionmanager.h"

#include <QSocketNotifier>

#include <array>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace {

// The library frees what it is given, so these allocate as it does.
char *copy(const char *text)
{
    return strdup(text);
}

SessionManager &self(SmPointer manager)
{
    return *static_cast<SessionManager *>(manager);
}

} // namespace

SessionManager::SessionManager()
{
    std::array<char, 256> error{};
    std::array<char, 8> vendor{"test"};
    std::array<char, 8> release{"1"};
    // Whoever can reach the socket may take part: a bus for one test needs no cookies.
    const auto trustsEveryone = [](char *) -> Bool { return True; };
    if (!SmsInitialize(vendor.data(), release.data(), acceptClient, this, trustsEveryone,
                       error.size(), error.data())
        || !IceListenForConnections(&m_listenerCount, &m_listeners, error.size(), error.data()))
        qFatal("no session manager: %s", error.data());
    char *addresses = IceComposeNetworkIdList(m_listenerCount, m_listeners);
    m_address = QString::fromLocal8Bit(addresses);
    std::free(addresses);

    for (int i = 0; i < m_listenerCount; ++i) {
        IceListenObj listener = m_listeners[i];
        IceSetHostBasedAuthProc(listener, trustsEveryone);
        auto *incoming = new QSocketNotifier(IceGetListenConnectionNumber(listener),
                                             QSocketNotifier::Read, this);
        connect(incoming, &QSocketNotifier::activated, this,
                [this, listener] { acceptConnection(listener); });
    }
    // The library's own answer to a connection that breaks is to end the process.
    IceSetIOErrorHandler([](IceConn) {});
}

SessionManager::~SessionManager()
{
    if (m_connection) {
        IceSetShutdownNegotiation(m_connection, False);
        IceCloseConnection(m_connection);
    }
    IceFreeListenObjs(m_listenerCount, m_listeners);
}

void SessionManager::acceptConnection(IceListenObj listener)
{
    IceAcceptStatus status = IceAcceptSuccess;
    m_connection = IceAcceptConnection(listener, &status);
    if (!m_connection)
        qFatal("a client could not connect");
    auto *messages
        = new QSocketNotifier(IceConnectionNumber(m_connection), QSocketNotifier::Read, this);
    connect(messages, &QSocketNotifier::activated, this, [this, messages] {
        const auto result = IceProcessMessages(m_connection, nullptr, nullptr);
        if (result == IceProcessMessagesSuccess)
            return;
        messages->setEnabled(false);
        messages->deleteLater();
        if (result == IceProcessMessagesIOError) {
            IceSetShutdownNegotiation(m_connection, False);
            IceCloseConnection(m_connection);
        }
        m_connection = nullptr;
        m_client = nullptr;
    });
}

Status SessionManager::acceptClient(SmsConn client, SmPointer manager, unsigned long *mask,
                                    SmsCallbacks *callbacks, char **)
{
    self(manager).m_client = client;
    *mask = SmsRegisterClientProcMask | SmsInteractRequestProcMask | SmsInteractDoneProcMask
        | SmsSaveYourselfRequestProcMask | SmsSaveYourselfP2RequestProcMask
        | SmsSaveYourselfDoneProcMask | SmsCloseConnectionProcMask | SmsSetPropertiesProcMask
        | SmsDeletePropertiesProcMask | SmsGetPropertiesProcMask;

    callbacks->register_client
        = {[](SmsConn conn, SmPointer, char *previousId) -> Status {
               std::free(previousId);
               SmsRegisterClientReply(conn, copy("1"));
               // A new client is told to save once, right away.
               SmsSaveYourself(conn, SmSaveLocal, False, SmInteractStyleNone, False);
               return True;
           },
           manager};
    callbacks->interact_request = {[](SmsConn conn, SmPointer data, int) {
                                       self(data).m_asked = true;
                                       SmsInteract(conn);
                                   },
                                   manager};
    callbacks->interact_done = {[](SmsConn, SmPointer, Bool) {}, manager};
    callbacks->save_yourself_request
        = {[](SmsConn, SmPointer, int, Bool, int, Bool, Bool) {}, manager};
    callbacks->save_yourself_phase2_request
        = {[](SmsConn conn, SmPointer) { SmsSaveYourselfPhase2(conn); }, manager};
    callbacks->save_yourself_done = {[](SmsConn conn, SmPointer data, Bool) {
                                         if (!std::exchange(self(data).m_firstSave, false))
                                             self(data).m_saved = true;
                                         else
                                             SmsSaveComplete(conn);
                                     },
                                     manager};
    callbacks->close_connection = {[](SmsConn conn, SmPointer data, int count, char **reasons) {
                                       SmFreeReasons(count, reasons);
                                       self(data).m_client = nullptr;
                                       SmsCleanUp(conn);
                                   },
                                   manager};
    callbacks->set_properties = {[](SmsConn, SmPointer, int count, SmProp **properties) {
                                     for (int i = 0; i < count; ++i)
                                         SmFreeProperty(properties[i]);
                                     std::free(properties);
                                 },
                                 manager};
    callbacks->delete_properties = {[](SmsConn, SmPointer, int count, char **names) {
                                        for (int i = 0; i < count; ++i)
                                            std::free(names[i]);
                                        std::free(names);
                                    },
                                    manager};
    callbacks->get_properties
        = {[](SmsConn conn, SmPointer) { SmsReturnProperties(conn, 0, nullptr); }, manager};
    return True;
}

void SessionManager::beginEnd()
{
    m_saved = false;
    m_asked = false;
    SmsSaveYourself(m_client, SmSaveBoth, True, SmInteractStyleAny, False);
}

void SessionManager::cancelEnd()
{
    SmsShutdownCancelled(m_client);
}

void SessionManager::completeEnd()
{
    SmsDie(m_client);
}
