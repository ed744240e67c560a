// A transfer as it is asked for at a prompt, and how it is to be reported there.

#pragma once

#include <string>

#include "transfer_request.h"

enum class ProgressStyle {
    Auto,
    Live,
    Lines,
    Json,
    None,
};

struct PromptRequest {
    TransferRequest Transfer;
    ProgressStyle Progress = ProgressStyle::Auto;
    // Between two lines.
    double IntervalSeconds = 5.0;
    bool bQuiet = false;
    bool bVerbose = false;
};

// Why a request cannot run where nobody can be asked: the sentence names the option to pass. Empty
// when the request does not insist on asking.
std::string SentenceIfNobodyCanBeAsked(const TransferRequest& Request);
