/* Stands in for the start of Visual C++'s library. */
void exit(int status);
int main(void);
void mainCRTStartup(void) { exit(main()); }
