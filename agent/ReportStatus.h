#pragma once

/// "action" of a download report. The values 1 and 2 belong to the service and are never sent.
enum DownloadStatus : int {
  DownloadFailed = -1,
  Downloading = 0,
  DownloadStopped = 3,
  DownloadCompleted = 4,
};

/// "action" of an install report.
enum InstallStatus : int {
  InstallFailed = -1,
  Installing = 0,
  NotInstalled = 1,
  Installed = 2,
};
