// Fetching and storing a file through the file-transfer endpoint of a web server.
#pragma once

#include <vum-qib-osl/osl_api.h>

#include <string>

/// Both transfers address server ("host", "host:port", "[IPv6]" or "[IPv6]:port"; port 80 when
/// none is given) and the endpoint's path, offer user and password only when the server (401) or
/// a proxy (407) asks for them, and take the proxy from the environment (http_proxy, https_proxy,
/// no_proxy). A plain HTTP answer of 400, 403 or 502, or no answer at all, is tried once more over
/// HTTPS (port 443 when the plain attempt used 80, else the same port) WITHOUT any check of the
/// server's certificate. Not for secrets on untrusted networks.
///
/// Failures throw QIBError with severity 0 and no location:
///   -1 "Open Internet failed"           no HTTP session could be had
///   -2 "Internet Connect failed"        empty or malformed server or port
///   -3 "Open Request failed"            malformed path
///   -3 "Send Request failed. Last Error is N"  the HTTPS attempt got no answer (N: libcurl's code)
///   -3 "Send Request failed. Status N"  the final status is 400 or above
///   -4 "Get Response failed"            the answer broke off in its headers
///   -5 the whole body, when it begins with "Error: " (the endpoint's own failures)
///   -6 "Read a response failed"         the answer broke off in its body
///   -7 "Authenticate failed"            401 (or 407) again after the credentials were offered
/// Safe to call from several threads at once once InitOSL has run.

/// GET PATH?action=get& (text) or PATH?action=get&istxt=0 (binary); content becomes the body.
OSL_API void HTTP_GetFile(const std::string& server, std::string path, bool isText,
                          std::string& content, std::string user, std::string password);

/// POST to PATH, form-encoded: "action=put&filedata=" (text) or "action=put&istxt=0&filedata=",
/// the content, then at once "http_file_size=" and the content's length in decimal. Every "&" of
/// content is first replaced, in place, by "%26"; nothing else is escaped, so a literal "%26" in a
/// file comes back as "&". The endpoint's answer body is appended to content.
OSL_API void HTTP_PutFile(const std::string& server, std::string path, bool isText,
                          std::string& content, std::string user, std::string password);
