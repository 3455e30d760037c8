#pragma once

// The messages of the gateway that users know, but for reports of failed conditions.

namespace messages {

constexpr const char* argumentCount =
    "Must have five or six input arguments: ([list of points], ignored, l, s, k, "
    "['cuda'|'cudadp'|'cpu'|'cpusp'|'cpudp'], [nabscissas])";
constexpr const char* outputCount = "Must have one output arguments";
constexpr const char* pointsType = "Input must be real, full, and nonstring";
constexpr const char* abscissas =
    "abscissas must be a number or a 2D matrix containing abscissas and weights.";
constexpr const char* l = "l (argument 3) must be a number.";
constexpr const char* s = "s (argument 4) must be a number.";
constexpr const char* k = "k (argument 5) must be a number.";
constexpr const char* rowCount = "Points (argument 1) must have dimension of three.";
constexpr const char* tooManyPoints = "Points (argument 1) must have at most 2147483647 columns.";
constexpr const char* noPoints = "The given grid must have at least one data point";
constexpr const char* modeType = "Input 5 must be a character string and either be 'cuda' or 'cpu'";
constexpr const char* modeValue = "Input 5 must either be 'cuda' or 'cpu[sp,dp]'";
constexpr const char* cpuMode = "CPU version not implemented, yet.";

constexpr const char* all[] = {
    argumentCount, outputCount, pointsType,    abscissas, l,         s,      k,
    rowCount,      noPoints,    tooManyPoints, modeType,  modeValue, cpuMode};

}  // namespace messages
