#include "support/eventwait.h"

#include <QEventLoop>
#include <QTimer>

bool waitUntil(const std::function<bool()> &done, int timeoutMs)
{
    bool met = done();
    QEventLoop loop;
    QTimer check;
    QObject::connect(&check, &QTimer::timeout, &loop, [&] {
        if ((met = done()))
            loop.quit();
    });
    QTimer::singleShot(timeoutMs, &loop, &QEventLoop::quit);
    check.start(5);
    if (!met)
        loop.exec();
    return met;
}
