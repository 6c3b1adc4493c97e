#pragma once

#include <QString>
#include <QStringList>

/// The fixed places of the device, each with the environment variable that moves it for development, tests and
/// demonstrations. An empty variable counts as not set. Read at every call; any thread.
namespace DevicePaths {

/// "/home/velda"; VELDA_HOME. No slash at its end.
QString dataRoot();

/// kavor/log under the data root; VELDA_LOG_DIR.
QString logFolder();

/// Where an RF-module package is laid down for the module: kavor/upgrade/veldax/ under the data root, with the slash at
/// its end; VELDA_MODULE_DROP.
QString moduleDropFolder();

/// "/media", the parent of each user's removable media; VELDA_MEDIA. No slash at its end.
QString mediaRoot();

/// The folder below mediaRoot() in which each of the removable media of userName() has a folder of its own.
QString mediaFolder();

/// Login name of the account that owns the folder of removable media: VELDA_USER, otherwise the account of this
/// process. Empty when even the system does not know it.
QString userName();

/// Addresses of the FPGA boards in the order of their channels; VELDA_FPGA_ADDRESSES, separated by commas.
QStringList fpgaAddresses();

/// "/etc/velda/update", the policy and the public keys of signed update packages; VELDA_UPDATE_TRUST. No slash at its
/// end.
QString updateTrustFolder();

/// "/sys/class/net", one entry per network interface; VELDA_NET_CLASS. No slash at its end.
QString netClassFolder();

} // namespace DevicePaths
