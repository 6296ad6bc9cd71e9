#pragma once

#include <QObject>
#include <QString>

#include <X11/SM/SMlib.h>

/// A session manager (X Session Management Protocol 1.0) with one client.
class SessionManager : public QObject
{
public:
    SessionManager();
    ~SessionManager() override;

    /// Value of SESSION_MANAGER for the client.
    QString address() const { return m_address; }

    /// Whether a client has come and made its first save.
    bool hasClient() const { return m_client && !m_firstSave; }
    /// Tells the client that the session ends and that it is to save; it may ask the user.
    void beginEnd();
    /// Whether the client has answered that it is done, since the last such call.
    bool isSaved() const { return m_saved; }
    /// Whether the client wanted to ask the user something, which would hold the end up.
    bool wasAsked() const { return m_asked; }
    void cancelEnd();
    void completeEnd();

private:
    static Status acceptClient(SmsConn client, SmPointer manager, unsigned long *mask,
                               SmsCallbacks *callbacks, char **failure);
    void acceptConnection(IceListenObj listener);

    QString m_address;
    int m_listenerCount = 0;
    IceListenObj *m_listeners = nullptr;
    IceConn m_connection = nullptr;
    SmsConn m_client = nullptr;
    bool m_firstSave = true; ///< is still awaited
    bool m_saved = false;
    bool m_asked = false;
};
