// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/downloadmanager.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QUrl>

namespace
{
constexpr int kTimeoutMs = 10000;
constexpr qint64 kMostBytes = 4096; ///< an answer is one short line
constexpr int kMostCharacters = 40;
} // namespace

DownloadManager::DownloadManager(QObject *parent) : QObject(parent), versionText(tr("unknown")) {}

QString DownloadManager::query(int major, int minor, const QString &serialNumber,
                               int keyTableVersion)
{
    // Encoded first: the serial number is free text and may hold any character. Multi-arg
    // form, so that a "%2" inside of it is not replaced in its turn.
    const QString serial = QString::fromLatin1(QUrl::toPercentEncoding(serialNumber));
    return QStringLiteral("/cgi-bin/kstversion.py?ver=%1.%2&sn=%3&kv=%4")
        .arg(QString::number(major), QString::number(minor), serial,
             QString::number(keyTableVersion));
}

void DownloadManager::execute()
{
    if (host.isEmpty())
        return;
    const QUrl url(QStringLiteral("https://") + host + pathAndQuery);
    if (!url.isValid()) {
        versionText = tr("unresponsive");
        emit answered();
        return;
    }
    if (!network)
        network = new QNetworkAccessManager(this);
    QNetworkRequest request(url);
    request.setTransferTimeout(kTimeoutMs);
    QNetworkReply *reply = network->get(request);
    reply->setReadBufferSize(kMostBytes);
    connect(reply, &QNetworkReply::downloadProgress, reply, [reply](qint64 received, qint64) {
        if (received >= kMostBytes)
            reply->abort();
    });
    connect(reply, &QNetworkReply::finished, this, [this, reply]() { finish(reply); });
}

void DownloadManager::finish(QNetworkReply *reply)
{
    reply->deleteLater();
    versionText = tr("unresponsive");
    if (reply->error() == QNetworkReply::NoError) {
        const QString text = QString::fromUtf8(reply->read(kMostBytes));
        const QString line = text.section(QLatin1Char('\n'), 0, 0).simplified();
        if (!line.isEmpty())
            versionText = line.left(kMostCharacters);
    }
    emit answered();
}
