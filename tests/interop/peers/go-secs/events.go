package main

import (
	"encoding/hex"
	"encoding/json"
	"os"
	"sync"

	"github.com/arloliu/go-secs/v2/hsms"
)

type fields map[string]any

// events writes one JSON object a line.
type events struct {
	mutex sync.Mutex
	out   *os.File
}

func (e *events) emit(event string, more fields) {
	object := fields{"event": event}
	for name, value := range more {
		object[name] = value
	}
	line, err := json.Marshal(object)
	if err != nil {
		panic(err)
	}
	e.mutex.Lock()
	defer e.mutex.Unlock()
	_, _ = e.out.Write(append(line, '\n'))
}

func (e *events) report(err error, more fields) {
	object := fields{"text": err.Error()}
	for name, value := range more {
		object[name] = value
	}
	e.emit("error", object)
}

// message emits a message with its body as the stack's encoder writes what its decoder read.
func (e *events) message(event string, message *hsms.DataMessage, more fields) {
	item, err := message.Item()
	if err != nil {
		e.report(err, more)
		return
	}
	object := fields{
		"stream":   message.Stream(),
		"function": message.Function(),
		"w":        message.WaitBit(),
		"system":   hsms.FromSystemBytes(message.SystemBytes()),
		"device":   message.SessionID(),
		"body":     hex.EncodeToString(item.ToBytes()),
	}
	for name, value := range more {
		object[name] = value
	}
	e.emit(event, object)
}
