#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

#include <gtest/gtest.h>

// A user profile of its own for one test: data, configuration, runtime and
// cache folders in a temporary folder, "APPDATA" unset, QSettings pointed there.
// A temporary installation folder is part of it.
class TempProfile
{
public:
    TempProfile();
    ~TempProfile();
    Q_DISABLE_COPY_MOVE(TempProfile)
    QString root() const { return m_dir.path(); }
    // The program's data folder in this profile, with its trailing "/".
    QString dataFolder() const;
    QString installFolder() const;
    QString configFile() const;
    // Sets "APPDATA" for the rest of the test (restored afterwards).
    void setAppData(const QString &value);
    static QByteArray readFile(const QString &path);
    // The catalogue's encoding: FF FE, then UTF-16 little-endian units.
    static QByteArray utf16File(const QString &text);
    static void writeFile(const QString &path, const QByteArray &bytes);

private:
    QTemporaryDir m_dir;
    QByteArray m_saved[5];
    bool m_had[5] = {};
};

class ProfileTest : public ::testing::Test
{
public:
    TempProfile profile;
};
