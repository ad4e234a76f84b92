// What the command line and the environment ask of this start. Pure.
#pragma once

#include <QSize>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace corvelle {

struct LaunchOptions
{
    QString library;           // CORVELLE_LIBRARY; empty when unset or empty
    bool libraryIsSet = false; // also when empty
    QString driverFile;        // CORVELLE_DRIVER
    bool driverIsSet = false;
    bool background = false;   // CORVELLE_BACKGROUND is "1": no activation, no alerts
    bool plate = false;        // --plate: no note of a scratch library
    std::optional<QSize> size; // --size: of the window's content
    QString folder;            // --folder: opened at the first appearance
    QString itemID;            // of an address corvelle://item/<id>
    std::optional<double>
        probeMs; // CORVELLE_PROBE_MS: passes of the canvas longer than this are logged

    // The window tells that its library is a scratch one.
    bool showsScratchNote() const { return !library.isEmpty() && !plate; }
    // What belongs to the person alone is left alone: nothing moves into the keyring.
    bool isUnderTest() const { return libraryIsSet || driverIsSet; }
};

// Arguments are matched whole, anywhere in the list; an operand is the next argument. A switch
// without its operand is ignored. `environment` gives the value of a variable, null when it isn't
// set.
LaunchOptions readLaunchOptions(
    const QStringList& arguments, const std::function<QString(const char*)>& environment);

// The node id of an address corvelle://item/<id>; empty for anything else.
QString itemOfAddress(const QString& address);

} // namespace corvelle
