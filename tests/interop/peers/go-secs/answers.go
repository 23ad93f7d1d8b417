package main

import (
	"sync"
	"time"

	"github.com/arloliu/go-secs/v2/hsms"
	"github.com/arloliu/go-secs/v2/secs2"
)

// answer is what a primary is answered with.
type answer struct {
	stream, function byte
	item             secs2.Item
	echo             bool
	delay            time.Duration
	left             int // 0: for ever
}

type messageName struct{ stream, function byte }

// answers knows what was told, and else what the standard says.
type answers struct {
	mutex       sync.Mutex
	equipment   bool
	useDefaults bool
	told        map[messageName]*answer
}

func (a *answers) tell(name messageName, what answer) {
	a.mutex.Lock()
	defer a.mutex.Unlock()
	a.told[name] = &what
}

func (a *answers) setDefaults(on bool) {
	a.mutex.Lock()
	defer a.mutex.Unlock()
	a.useDefaults = on
}

func (a *answers) identity() secs2.Item {
	if a.equipment {
		return secs2.L(secs2.A("PEER"), secs2.A("1.0"))
	}
	return secs2.L()
}

func (a *answers) standard(name messageName) (secs2.Item, bool) {
	switch name {
	case messageName{1, 1}:
		return a.identity(), true
	case messageName{1, 13}:
		return secs2.L(secs2.B(byte(0)), a.identity()), true
	case messageName{5, 1}, messageName{6, 11}:
		return secs2.B(byte(0)), true
	}
	return nil, false
}

// find returns the answer of a primary; false: it is not answered.
func (a *answers) find(message *hsms.DataMessage) (answer, bool) {
	a.mutex.Lock()
	defer a.mutex.Unlock()
	name := messageName{message.Stream(), message.Function()}
	if told, found := a.told[name]; found {
		if told.left > 0 {
			if told.left--; told.left == 0 {
				delete(a.told, name)
			}
		}
		return *told, true
	}
	if !a.useDefaults || !message.WaitBit() {
		return answer{}, false
	}
	if item, known := a.standard(name); known {
		return answer{stream: name.stream, function: name.function + 1, item: item}, true
	}
	return answer{stream: name.stream, function: 0}, true
}
