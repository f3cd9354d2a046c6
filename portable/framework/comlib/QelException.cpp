#include "qel/QelException.h"

QelException::~QelException() = default;

void QelException::set_transrator() {}
