#include <stdio.h>
#include <tolmar/agent.h>

static void OnProgress(void* context, const tolmar_progress* progress) {
  (void)context;
  printf("%s: %s, %d %%\n", progress->l1_fru_pn, progress->status, (int)progress->percent);
}

static int Failed(const char* step, uint32_t code, const char* complaint) {
  tolmar_cause cause = {.size = sizeof cause};
  if (code == TOLMAR_OK) return 0;
  tolmar_describe(code, &cause);
  printf("%s: code %u. %s %s\n", step, (unsigned)code, cause.happened, cause.remedy);
  if (complaint != NULL) printf("%s\n", complaint);
  return 1;
}

int main(void) {
  tolmar_install_options options = {.size = sizeof options};
  char *complaint, *titles = NULL, *installed = NULL;
  int failed;

  /* NULL: the suite finds its configuration. The agent asks the service while it starts. */
  failed = Failed("start", tolmar_start(NULL, &complaint), complaint);
  tolmar_free(complaint);
  if (failed) return 1;

  options.cancel = tolmar_event_create(); /* tolmar_event_set stops it, from any thread */
  options.on_progress = OnProgress;       /* on this thread, within the call */
  failed = Failed("titles", tolmar_get_entitled_software(&titles), NULL) ||
           Failed("install", tolmar_install_entitled_software(titles, &options, &installed), NULL);
  if (installed != NULL) printf("%s\n", installed); /* JSON: each title has "status" now */

  tolmar_free(titles);
  tolmar_free(installed);
  tolmar_event_close(options.cancel);
  tolmar_stop(); /* always, before the process ends or unloads the library */
  return failed;
}
