// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>

class QNetworkAccessManager;
class QNetworkReply;

/// Asks a server which version is the newest. Without a host, which is the default,
/// nothing goes over the network.
class DownloadManager : public QObject
{
    Q_OBJECT
public:
    explicit DownloadManager(QObject *parent = nullptr);

    /// The path and query of the request.
    static QString query(int major, int minor, const QString &serialNumber, int keyTableVersion);

    QString host;
    QString pathAndQuery;
    /// What is known: "unknown" until an answer comes, "unresponsive" if none does.
    QString versionText;

public slots:
    void execute();

signals:
    void answered();

private:
    void finish(QNetworkReply *reply);
    QNetworkAccessManager *network = nullptr;
};
