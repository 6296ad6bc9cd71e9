#pragma once

#include <QObject>
#include <QString>

#include <memory>

/// A session manager (X Session Management Protocol 1.0) with one client.
class SessionManager : public QObject
{
public:
    SessionManager();
    ~SessionManager() override;

    /// Value of SESSION_MANAGER for the client.
    QString address() const;
    /// Whether a client has come and made its first save.
    bool hasClient() const;
    /// Tells the client that the session ends and that it is to save; it may ask the user.
    void beginEnd();
    /// Whether the client has answered that it is done.
    bool isSaved() const;
    /// Whether the client wanted to ask the user something, which would hold the end up.
    bool wasAsked() const;
    void cancelEnd();
    void completeEnd();

private:
    struct Session;

    void acceptConnection(void *listener);
    void closeConnection();

    std::unique_ptr<Session> m_session;
};
