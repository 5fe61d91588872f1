/// Files on the internet: whether a path is one, reading one into a stream, and the proxy that leads to one.
#pragma once

#include "ZkTools/Export.h"
#include "ZkTools/Stream.h"

#include <string>

namespace web {
class uri; // of cpprestsdk: <cpprest/base_uri.h>
}

/// True when the text begins with "http:", "https:", "ftp:" or "gopher:", in upper or lower case.
[[nodiscard]] ZKTOOLS_API bool fIsInternetFile(std::wstring const & sPath);

/// Reads what the server has under an HTTP or HTTPS URL and writes its bytes to the stream, unconverted and as they
/// come. Always asks the server, never the cache, by the settings of the system (proxy, time-outs), once, and follows
/// its redirections. An empty file writes nothing. URLs of other kinds fail, those of FTP and Gopher too.
///
/// What had come when reading failed is on the stream. A server that answers anything but 200 leaves the stream alone.
/// \throws TXZkTools with what the server or the system has to say, if anything, and message 4260 (URL) behind it;
///         what the stream throws
ZKTOOLS_API void ReadInternetFile(std::wstring const & sUrl, TStreamBase & tStream);

/// Asks an auto-configuration file (PAC) for the way to a target.
/// \param sConfigUrl the URL of that file
/// \returns "http://" and the first proxy that the file names; empty when the target is reached without one, and when
///          the file cannot be had: never throws for that
[[nodiscard]] ZKTOOLS_API std::wstring sGetProxyForUrl(std::wstring const & sConfigUrl, web::uri const & tTarget);
