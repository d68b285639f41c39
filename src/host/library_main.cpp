// libmarrowfin.so is the host layer linked whole; the exports map keeps all
// but the exported functions hidden.
