#pragma once

namespace JobParser::Worker
{

class Service;

/// Answers requests from one descriptor to another, a line each, until one asks to end, the input ends, or
/// nobody takes the answers.
void answerRequests(Service& service, int input, int output);

} // namespace JobParser::Worker
