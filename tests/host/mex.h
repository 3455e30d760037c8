#pragma once

#include <cstddef>

// The part of the MEX interface that the gateway uses, as implemented by the tests' host.

struct mxArray;
using mwSize = std::size_t;

enum mxClassID { mxDOUBLE_CLASS = 6 };
enum mxComplexity { mxREAL = 0, mxCOMPLEX = 1 };

extern "C" {

bool mxIsChar(const mxArray* array);
bool mxIsClass(const mxArray* array, const char* name);
bool mxIsComplex(const mxArray* array);
bool mxIsDouble(const mxArray* array);
bool mxIsLogical(const mxArray* array);
bool mxIsNumeric(const mxArray* array);
bool mxIsSparse(const mxArray* array);
std::size_t mxGetM(const mxArray* array);
std::size_t mxGetN(const mxArray* array);
double* mxGetPr(const mxArray* array);
void* mxGetData(const mxArray* array);
void* mxGetImagData(const mxArray* array);
double mxGetScalar(const mxArray* array);
char* mxArrayToString(const mxArray* array);
void mxFree(void* memory);
mxArray* mxCreateNumericArray(mwSize ndim, const mwSize* dims, mxClassID classId,
                              mxComplexity complexity);
int mexPrintf(const char* format, ...);
void mexErrMsgTxt(const char* message);
void mexEndInterruptedCall();  // not in real hosts: ends an interrupted call

void mexFunction(int nlhs, mxArray* plhs[], int nrhs, const mxArray* prhs[]);
}
