#include "base/givenstream.h"

LbGivenStream::~LbGivenStream() = default;
