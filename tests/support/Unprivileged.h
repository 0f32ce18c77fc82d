#pragma once

#include <QtTest>

#include <unistd.h>

/// The process without the rights of the superuser, for as long as this lives: permissions of files then
/// count for it, also where tests run as root.
class Unprivileged
{
public:
    Unprivileged()
        : mUser(geteuid())
    {
        if (mUser == 0 && seteuid(Nobody) != 0)
            QTest::qFail("The rights of the superuser cannot be laid down", __FILE__, __LINE__);
    }
    ~Unprivileged()
    {
        if (mUser == 0 && seteuid(mUser) != 0)
            QTest::qFail("The rights of the superuser cannot be taken up again", __FILE__, __LINE__);
    }
    Unprivileged(const Unprivileged&) = delete;
    Unprivileged& operator=(const Unprivileged&) = delete;

private:
    static constexpr uid_t Nobody = 65534;

    const uid_t mUser;
};
