//go:build windows && amd64

package tolmar

import (
	"fmt"
	"syscall"
	"unsafe"
)

// The DLLs stand beside the program. Without cgo.
var dll = syscall.NewLazyDLL("TolmarAgentC.dll")

// Error is a code of the agent or of the layer below it, in words.
type Error struct {
	Code                       uint32
	ID, Happened, Seen, Remedy string
	Complaint                  string // of Start: the line that names file and key
}

func (e *Error) Error() string {
	if e.Complaint != "" {
		return e.Complaint
	}
	return fmt.Sprintf("code %d: %s %s", e.Code, e.Happened, e.Remedy)
}

type cause struct {
	size                       uint32
	id, happened, seen, remedy *byte
}

// call calls a function that returns a code.
//
//go:uintptrescapes
func call(name string, arguments ...uintptr) error {
	code, _, _ := dll.NewProc(name).Call(arguments...)
	if uint32(code) == 0 {
		return nil
	}
	var c cause
	c.size = uint32(unsafe.Sizeof(c))
	dll.NewProc("tolmar_describe").Call(code, uintptr(unsafe.Pointer(&c)))
	return &Error{Code: uint32(code), ID: text(c.id), Happened: text(c.happened), Seen: text(c.seen), Remedy: text(c.remedy)}
}

// utf8 makes what the library takes of a Go text; one with a zero in it is cut there.
func utf8(s string) *byte { return &append([]byte(s), 0)[0] }

func text(p *byte) string {
	if p == nil {
		return ""
	}
	length := 0
	for *(*byte)(unsafe.Add(unsafe.Pointer(p), length)) != 0 {
		length++
	}
	return string(unsafe.Slice(p, length))
}

// taken makes a Go text of one that the library has handed over, which it gets back.
func taken(p *byte) string {
	s := text(p)
	dll.NewProc("tolmar_free").Call(uintptr(unsafe.Pointer(p)))
	return s
}

func flag(b bool) uintptr {
	if b {
		return 1
	}
	return 0
}
