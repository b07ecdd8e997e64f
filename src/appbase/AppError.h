#pragma once

#include <QException>
#include <QString>

// The application's error for the user: each case carries the text that the
// notice shows. It is thrown, and crosses QFuture boundaries as a QException,
// so a failure in a background task reaches the flow that awaits it intact.
//
// It lives in appbase because every layer that can fail in front of the user
// (capture, output, cloud, the app itself) sits above this one.
class AppError : public QException
{
public:
    // Declaration order is part of the vocabulary; keep it.
    enum class Case {
        captureFailed,
        fileIOFailed,
        uploadFailed,
        saveFolderUnavailable,
        consentRevoked,
        displayNotFound,
        croppingFailed,
        noDisplayAtRegion,
        uploadNotConfigured,
        keychainDenied,
    };

    // `underlying` is the localized description of the error that caused it.
    static AppError captureFailed(const QString &underlying);
    static AppError fileIOFailed(const QString &underlying);
    static AppError uploadFailed(const QString &text);
    static AppError saveFolderUnavailable(const QString &path);
    static AppError consentRevoked();
    static AppError displayNotFound();
    static AppError croppingFailed();
    // No flow raises it: a region that touches no display is croppingFailed.
    static AppError noDisplayAtRegion();
    static AppError uploadNotConfigured();
    static AppError keychainDenied();

    Case kind() const { return m_case; }
    // The payload: the underlying description, the upload text or the path.
    QString payload() const { return m_payload; }
    QString errorDescription() const;
    // The case's name, for logs.
    QString caseName() const;

    const char *what() const noexcept override;
    void raise() const override { throw *this; }
    AppError *clone() const override { return new AppError(*this); }

private:
    AppError(Case kind, QString payload);

    Case m_case;
    QString m_payload;
    QByteArray m_what;
};
