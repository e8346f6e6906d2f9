// ini/src/http_file_internal.h
// The parts of the transfers that work on text alone: what an answer means and how a stored
// file is sent.
#pragma once

#include <string>

#include "platform/curl_http.h"

namespace osl::detail {

/// The final answer of a transfer: appends its body to content, or throws the QIBError of a
/// status of 400 or above (-3), an answer broken off in its headers (-4) or body (-6), or an
/// endpoint's "Error: " body (-5).
void takeAnswer(const osl::platform::HttpReply& reply, std::string& content);

/// The form data of a store: every "&" of content becomes "%26" (content is changed in place),
/// then "action=put&[istxt=0&]filedata=", content, "http_file_size=" and content's length.
std::string putFormData(std::string& content, bool isText);

}  // namespace osl::detail
