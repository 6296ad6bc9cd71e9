#include "tests/desktop/support/sessionmanager.h"

#include <QSocketNotifier>

#include <array>
#include <cstdlib>
#include <utility>

// Last, for its macros.
#include <X11/SM/SMlib.h>

struct SessionManager::Session
{
    QString address;
    int listenerCount = 0;
    IceListenObj *listeners = nullptr;
    IceConn connection = nullptr;
    SmsConn client = nullptr;
    bool awaitsFirstSave = true;
    bool saved = false;
    bool asked = false;
};

namespace {

/// Finds the session of a callback.
template <typename T> T &self(SmPointer session)
{
    return *static_cast<T *>(session);
}

Status registerClient(SmsConn client, SmPointer, char *previousId)
{
    std::free(previousId);
    std::array<char, 2> identity{"1"};
    SmsRegisterClientReply(client, identity.data());
    // A new client is told to save once, right away.
    SmsSaveYourself(client, SmSaveLocal, False, SmInteractStyleNone, False);
    return True;
}

void setProperties(SmsConn, SmPointer, int count, SmProp **properties)
{
    for (int i = 0; i < count; ++i)
        SmFreeProperty(properties[i]);
    std::free(properties);
}

void deleteProperties(SmsConn, SmPointer, int count, char **names)
{
    for (int i = 0; i < count; ++i)
        std::free(names[i]);
    std::free(names);
}

template <typename Session>
Status acceptClient(SmsConn client, SmPointer session, unsigned long *mask, SmsCallbacks *callbacks,
                    char **)
{
    self<Session>(session).client = client;
    *mask = SmsRegisterClientProcMask | SmsInteractRequestProcMask | SmsInteractDoneProcMask
        | SmsSaveYourselfRequestProcMask | SmsSaveYourselfP2RequestProcMask
        | SmsSaveYourselfDoneProcMask | SmsCloseConnectionProcMask | SmsSetPropertiesProcMask
        | SmsDeletePropertiesProcMask | SmsGetPropertiesProcMask;
    callbacks->register_client = {registerClient, session};
    callbacks->interact_request = {[](SmsConn conn, SmPointer data, int) {
                                       self<Session>(data).asked = true;
                                       SmsInteract(conn);
                                   },
                                   session};
    callbacks->interact_done = {[](SmsConn, SmPointer, Bool) {}, session};
    callbacks->save_yourself_request
        = {[](SmsConn, SmPointer, int, Bool, int, Bool, Bool) {}, session};
    callbacks->save_yourself_phase2_request
        = {[](SmsConn conn, SmPointer) { SmsSaveYourselfPhase2(conn); }, session};
    callbacks->save_yourself_done
        = {[](SmsConn conn, SmPointer data, Bool) {
               if (std::exchange(self<Session>(data).awaitsFirstSave, false))
                   SmsSaveComplete(conn);
               else
                   self<Session>(data).saved = true;
           },
           session};
    callbacks->close_connection = {[](SmsConn conn, SmPointer data, int count, char **reasons) {
                                       SmFreeReasons(count, reasons);
                                       self<Session>(data).client = nullptr;
                                       SmsCleanUp(conn);
                                   },
                                   session};
    callbacks->set_properties = {setProperties, session};
    callbacks->delete_properties = {deleteProperties, session};
    callbacks->get_properties
        = {[](SmsConn conn, SmPointer) { SmsReturnProperties(conn, 0, nullptr); }, session};
    return True;
}

} // namespace

SessionManager::SessionManager() : m_session(std::make_unique<Session>())
{
    std::array<char, 256> error{};
    std::array<char, 8> vendor{"test"};
    std::array<char, 8> release{"1"};
    // Whoever reaches the socket may take part: a session of one test needs no cookies.
    const auto trustsEveryone = [](char *) -> Bool { return True; };
    if (!SmsInitialize(vendor.data(), release.data(), acceptClient<Session>, m_session.get(),
                       trustsEveryone, error.size(), error.data())
        || !IceListenForConnections(&m_session->listenerCount, &m_session->listeners, error.size(),
                                    error.data()))
        qFatal("no session manager: %s", error.data());
    char *addresses = IceComposeNetworkIdList(m_session->listenerCount, m_session->listeners);
    m_session->address = QString::fromLocal8Bit(addresses);
    std::free(addresses);

    for (int i = 0; i < m_session->listenerCount; ++i) {
        IceListenObj listener = m_session->listeners[i];
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
    if (m_session->connection)
        closeConnection();
    IceFreeListenObjs(m_session->listenerCount, m_session->listeners);
}

void SessionManager::acceptConnection(void *listener)
{
    IceAcceptStatus status = IceAcceptSuccess;
    m_session->connection = IceAcceptConnection(static_cast<IceListenObj>(listener), &status);
    if (!m_session->connection)
        qFatal("a client could not connect");
    auto *messages = new QSocketNotifier(IceConnectionNumber(m_session->connection),
                                         QSocketNotifier::Read, this);
    connect(messages, &QSocketNotifier::activated, this, [this, messages] {
        const auto result = IceProcessMessages(m_session->connection, nullptr, nullptr);
        if (result == IceProcessMessagesSuccess)
            return;
        messages->setEnabled(false);
        messages->deleteLater();
        if (result == IceProcessMessagesIOError)
            closeConnection();
        m_session->connection = nullptr;
        m_session->client = nullptr;
    });
}

void SessionManager::closeConnection()
{
    if (m_session->client)
        SmsCleanUp(std::exchange(m_session->client, nullptr));
    IceSetShutdownNegotiation(m_session->connection, False);
    IceCloseConnection(std::exchange(m_session->connection, nullptr));
}

QString SessionManager::address() const
{
    return m_session->address;
}

bool SessionManager::hasClient() const
{
    return m_session->client && !m_session->awaitsFirstSave;
}

void SessionManager::beginEnd()
{
    m_session->saved = false;
    m_session->asked = false;
    SmsSaveYourself(m_session->client, SmSaveBoth, True, SmInteractStyleAny, False);
}

bool SessionManager::isSaved() const
{
    return m_session->saved;
}

bool SessionManager::wasAsked() const
{
    return m_session->asked;
}

void SessionManager::cancelEnd()
{
    SmsShutdownCancelled(m_session->client);
}

void SessionManager::completeEnd()
{
    SmsDie(m_session->client);
}
