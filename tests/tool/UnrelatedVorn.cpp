// Not the error library, whatever the file is called; and, with a symbol that nobody has, no plug-in either.

#ifdef ASKS_FOR_MORE
extern int definedNowhere;
int* Unrelated() { return &definedNowhere; }
#else
int Unrelated() { return 0; }
#endif
