#pragma once
// Every exchange with the service: a form POST returning text, a GET into a
// file and a multipart upload. Each call tries the installed stacks in turn,
// starting with the one that worked last (option FNetUseInet), and remembers
// the one that succeeded. All calls block; failures come back as false.

#include <cstdint>
#include <string>
#include <string_view>

#include "net/http_stack.h"
#include "platform/window_messages.h"

namespace marrowfin {

// The service's base URL without a trailing slash; the option ServiceBase
// overrides the built-in one (tests and the demo point it at a local service).
std::u16string ServiceBaseUrl();

bool PostForm(std::u16string_view url, std::u16string_view params, std::u16string& out);
// PostForm with the reply's bytes as they came, for a reader that decodes
// them itself (a reply of all galleries runs to tens of megabytes).
bool PostFormBytes(std::u16string_view url, std::u16string_view params, std::string& out);
bool DownloadFile(std::u16string_view url, std::u16string_view localPath, WindowHandle progressWindow,
                  uint16_t jobNumber);
bool UploadFile(std::u16string_view url, std::u16string_view parentDir, std::u16string_view localPath,
                std::u16string& out, WindowHandle progressWindow);

// The download URL's escaping: UTF-8, then bytes outside 33..126 and the
// reserved marks become %xx (lower case). A result over 1,024 characters
// leaves the URL as it was.
std::string PercentEncodeDownloadUrl(std::u16string_view url);
// The escaping of form-post and upload URLs: UTF-8, then spaces, controls,
// bytes above 126 and the marks a URL cannot carry raw (" # % < > \ ^ ` { | })
// become %XX; the query's own separators (? & = , /) stay, and so does an
// escape already made (a '%' before two hex digits).
std::string EscapeRequestUrl(std::u16string_view url);
// A value typed by the user, made ready to stand in a query: the marks that
// would end or split it there (% & + = # ;) become %XX. EscapeRequestUrl
// keeps these escapes and escapes the rest, so the value arrives as typed.
std::u16string EscapeQueryValue(std::u16string_view value);
// Reply bytes up to the first zero byte, decoded from UTF-8.
std::u16string DecodeReply(std::string_view bytes);

// Stacks by number; the libcurl stack stands in its slot 2 by default. Tests
// put scripted stacks into the other slots (or replace slot 2); null empties a slot.
void InstallHttpStack(int32_t number, HttpStack* stack);
HttpStack* InstalledHttpStack(int32_t number);
void RestoreDefaultHttpStacks();

}  // namespace marrowfin
