#include "support/eventwait.h"

#include <QEventLoop>
#include <QTimer>

bool waitUntil(const std::function<bool()> &done, int timeoutMs)
{
    bool met = done();
    if (met)
        return true;
    QEventLoop loop;
    QTimer check;
    QObject::connect(&check, &QTimer::timeout, &loop, [&] {
        met = done();
        if (met)
            loop.quit();
    });
    QTimer::singleShot(timeoutMs, &loop, &QEventLoop::quit);
    check.start(5);
    loop.exec();
    return met;
}
