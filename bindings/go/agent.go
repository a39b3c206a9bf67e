//go:build windows && amd64

// Package tolmar drives the software-delivery agent from Go, through TolmarAgentC.dll. Documents are
// JSON texts; those that go in and come out come out also with an error of the agent's. What the
// operations do tells tolmar/agent.h. Any goroutine may call anything.
package tolmar

import (
	"context"
	"encoding/json"
	"sync"
	"syscall"
	"time"
	"unsafe"
)

// Configuration tells where the host suite's is: a path, or the JSON text itself, or neither.
type Configuration struct{ Path, JSON string }

// Progress is how a title is getting on: "downloading", "installing", ..., percent of the download.
type Progress struct {
	Title, Status string
	Percent       int
}

// DownloadReport and InstallReport are what the service is told; Action as in agent/ReportStatus.h.
type DownloadReport struct {
	Title, Module, Message, FileName, FileURL, DeviceDate string
	Action, Progress                                      int32
}
type InstallReport struct {
	Title, Module, Message, DeviceDate string
	Action                             int32
}

// Start starts the agent, once in a process. It asks the service, for many minutes while that is down.
func Start(configuration Configuration) error {
	var complaint *byte
	given := struct {
		size       uint32
		path, json *byte
	}{size: 24}
	if configuration.Path != "" {
		given.path = utf8(configuration.Path)
	}
	if configuration.JSON != "" {
		given.json = utf8(configuration.JSON)
	}
	err := call("tolmar_start", uintptr(unsafe.Pointer(&given)), uintptr(unsafe.Pointer(&complaint)))
	line := taken(complaint)
	if failure, ok := err.(*Error); ok {
		failure.Complaint = line
	}
	return err
}

// Stop stops the agent for good, before the process ends. Contexts of calls that go on are the caller's.
func Stop() error { return call("tolmar_stop") }

// Version is the library's version of the interface.
func Version() uint32 {
	version, _, _ := dll.NewProc("tolmar_api_version").Call()
	return uint32(version)
}

func SetBaseURI(base string) error {
	return call("tolmar_set_base_uri", uintptr(unsafe.Pointer(utf8(base))))
}

func SetRealm(realm string) error {
	return call("tolmar_set_realm", uintptr(unsafe.Pointer(utf8(realm))))
}

// DeviceConfigure tells the agent that the device is configured, and waits for it; 0: does not wait.
func DeviceConfigure(timeout time.Duration) error {
	return call("tolmar_device_configure", uintptr(uint32(timeout.Milliseconds())))
}

func HasEntitledSoftware() (bool, error) {
	var entitled byte
	err := call("tolmar_has_entitled_software", uintptr(unsafe.Pointer(&entitled)))
	return entitled != 0, err
}

func EntitledSoftware() (json.RawMessage, error) {
	var titles *byte
	err := call("tolmar_get_entitled_software", uintptr(unsafe.Pointer(&titles)))
	return json.RawMessage(taken(titles)), err
}

// EntitledSoftwareStatus finds out which titles are installed. The context's end cancels it.
func EntitledSoftwareStatus(ctx context.Context, titles []byte, preinstallOnly bool) (json.RawMessage, error) {
	cancel, end := event(ctx)
	defer end()
	var result *byte
	err := call("tolmar_get_entitled_software_status", uintptr(unsafe.Pointer(utf8(string(titles)))), cancel,
		flag(preinstallOnly), uintptr(unsafe.Pointer(&result)))
	return json.RawMessage(taken(result)), err
}

// TitleStatus does the same for one title, by its position.
func TitleStatus(ctx context.Context, titles []byte, index int, preinstallOnly bool) (json.RawMessage, error) {
	cancel, end := event(ctx)
	defer end()
	var result *byte
	err := call("tolmar_get_title_status", uintptr(unsafe.Pointer(utf8(string(titles)))), uintptr(uint32(index)), cancel,
		flag(preinstallOnly), uintptr(unsafe.Pointer(&result)))
	return json.RawMessage(taken(result)), err
}

// Install downloads and installs every title. The context's end cancels it; onProgress, which may be
// nil, is called by this goroutine and must not panic.
func Install(ctx context.Context, titles []byte, preinstallOnly bool, onProgress func(Progress)) (json.RawMessage, error) {
	cancel, end := event(ctx)
	defer end()
	options := struct {
		size, preinstallOnly                uint32
		cancel, onProgress, context         uintptr
		intervalMilliseconds, _unusedInside uint32
	}{size: 40, preinstallOnly: uint32(flag(preinstallOnly)), cancel: cancel}
	if onProgress != nil {
		options.onProgress = progressCallback
		options.context = receivers.add(onProgress)
		defer receivers.remove(options.context)
	}
	var result *byte
	err := call("tolmar_install_entitled_software", uintptr(unsafe.Pointer(utf8(string(titles)))),
		uintptr(unsafe.Pointer(&options)), uintptr(unsafe.Pointer(&result)))
	return json.RawMessage(taken(result)), err
}

// InstallStatus tells how the title that is being installed is getting on, to whoever else asks.
func InstallStatus(titles []byte) (json.RawMessage, error) {
	var result *byte
	err := call("tolmar_get_install_status", uintptr(unsafe.Pointer(utf8(string(titles)))), uintptr(unsafe.Pointer(&result)))
	return json.RawMessage(taken(result)), err
}

func DownloadFiles(title, module string) (json.RawMessage, error) {
	var files *byte
	err := call("tolmar_get_download_files", uintptr(unsafe.Pointer(utf8(title))), uintptr(unsafe.Pointer(utf8(module))),
		uintptr(unsafe.Pointer(&files)))
	return json.RawMessage(taken(files)), err
}

func ReportDownload(r DownloadReport) error {
	return call("tolmar_report_download_progress", uintptr(unsafe.Pointer(utf8(r.Title))), uintptr(unsafe.Pointer(utf8(r.Module))),
		uintptr(r.Action), uintptr(unsafe.Pointer(utf8(r.Message))), uintptr(unsafe.Pointer(utf8(r.FileName))),
		uintptr(unsafe.Pointer(utf8(r.FileURL))), uintptr(r.Progress), uintptr(unsafe.Pointer(utf8(r.DeviceDate))))
}

func ReportInstall(r InstallReport) error {
	return call("tolmar_report_install_progress", uintptr(unsafe.Pointer(utf8(r.Title))), uintptr(unsafe.Pointer(utf8(r.Module))),
		uintptr(r.Action), uintptr(unsafe.Pointer(utf8(r.Message))), uintptr(unsafe.Pointer(utf8(r.DeviceDate))))
}

// event makes an event that the context's end sets. The caller ends it behind the call that gets it.
func event(ctx context.Context) (handle uintptr, end func()) {
	handle, _, _ = dll.NewProc("tolmar_event_create").Call()
	stop, stopped := make(chan struct{}), make(chan struct{})
	go func() {
		defer close(stopped)
		select {
		case <-ctx.Done():
			dll.NewProc("tolmar_event_set").Call(handle)
		case <-stop:
		}
	}()
	return handle, func() {
		close(stop)
		<-stopped
		dll.NewProc("tolmar_event_close").Call(handle)
	}
}

// functions are what the one callback that the library gets calls: those are never freed.
type functions struct {
	mutex sync.Mutex
	last  uintptr
	of    map[uintptr]func(Progress)
}

var receivers = functions{of: map[uintptr]func(Progress){}}

func (f *functions) add(function func(Progress)) uintptr {
	f.mutex.Lock()
	defer f.mutex.Unlock()
	f.last++
	f.of[f.last] = function
	return f.last
}

func (f *functions) remove(id uintptr) {
	f.mutex.Lock()
	defer f.mutex.Unlock()
	delete(f.of, id)
}

func (f *functions) get(id uintptr) func(Progress) {
	f.mutex.Lock()
	defer f.mutex.Unlock()
	return f.of[id]
}

type progress struct {
	size          uint32
	percent       int32
	title, status *byte
}

var progressCallback = syscall.NewCallback(func(id uintptr, p *progress) uintptr {
	receivers.get(id)(Progress{text(p.title), text(p.status), int(p.percent)})
	return 0
})
