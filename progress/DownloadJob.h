#pragma once

/// Name of the agent's jobs at the download service; events of other jobs are not the agent's.
inline constexpr const wchar_t* DownloadJobName = L"ZLTKIVJob";
