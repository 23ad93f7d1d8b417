package main

import (
	"context"
	"encoding/hex"
	"net"
	"sync"
	"time"

	"github.com/arloliu/go-secs/v2/hsms"
	"github.com/arloliu/go-secs/v2/hsmsss"
	"github.com/arloliu/go-secs/v2/logger"
	"github.com/arloliu/go-secs/v2/secs1"
	"github.com/arloliu/go-secs/v2/secs2"
)

// link is a connection of the stack and the TCP connection below it, which a test may end by force.
type link struct {
	hsms.Connection
	mutex     sync.Mutex
	socket    net.Conn
	listening chan struct{}
	once      sync.Once
}

func (l *link) keep(socket net.Conn) net.Conn {
	l.mutex.Lock()
	defer l.mutex.Unlock()
	l.socket = socket
	return socket
}

func (l *link) drop() {
	l.mutex.Lock()
	defer l.mutex.Unlock()
	if l.socket != nil {
		_ = l.socket.Close()
	}
}

func (l *link) dial(ctx context.Context, network, address string) (net.Conn, error) {
	var dialer net.Dialer
	socket, err := dialer.DialContext(ctx, network, address)
	if err != nil {
		return nil, err
	}
	return l.keep(socket), nil
}

// listener hands each accepted connection to the link as well.
type listener struct {
	net.Listener
	link *link
}

func (l listener) Accept() (net.Conn, error) {
	socket, err := l.Listener.Accept()
	if err != nil {
		return nil, err
	}
	return l.link.keep(socket), nil
}

func (l *link) listen(ctx context.Context, network, address string) (net.Listener, error) {
	var config net.ListenConfig
	inner, err := config.Listen(ctx, network, address)
	if err != nil {
		return nil, err
	}
	l.once.Do(func() { close(l.listening) })
	return listener{inner, l}, nil
}

func commonOptions(o options) []hsms.ConnOption {
	result := []hsms.ConnOption{hsms.WithLogger(logger.NewSlog(logger.WarnLevel, false))}
	setters := map[string]func(time.Duration) hsms.ConnOption{
		"t1": hsms.WithT1, "t2": hsms.WithT2, "t3": hsms.WithT3, "t4": hsms.WithT4, "t5": hsms.WithT5,
		"t6": hsms.WithT6, "t7": hsms.WithT7, "t8": hsms.WithT8, "linktest": hsms.WithLinktestInterval,
	}
	for name, duration := range o.times {
		if name == "linktest" && o.transport != "hsms" {
			continue
		}
		result = append(result, setters[name](duration))
	}
	return result
}

func newHsms(o options, l *link) (hsms.Connection, error) {
	settings := []hsmsss.Option{hsmsss.WithActive(), hsmsss.WithHostRole()}
	if !o.active {
		settings[0] = hsmsss.WithPassive()
	}
	if o.equipment {
		settings[1] = hsmsss.WithEquipRole()
	}
	settings = append(settings, hsmsss.WithDialer(l.dial), hsmsss.WithListener(l.listen),
		hsmsss.WithConnectionOption(hsms.WithSessionID(o.device)))
	for _, option := range commonOptions(o) {
		settings = append(settings, hsmsss.WithConnectionOption(option))
	}
	config, err := hsmsss.NewConfig(o.address, o.port, settings...)
	if err != nil {
		return nil, err
	}
	return hsmsss.New(config)
}

func newSecs1(o options, l *link) (hsms.Connection, error) {
	settings := []secs1.Option{secs1.WithActive(), secs1.WithHost()}
	if !o.active {
		settings[0] = secs1.WithPassive()
	}
	if o.equipment {
		settings[1] = secs1.WithEquipment()
	}
	settings = append(settings, secs1.WithDialer(l.dial), secs1.WithListener(l.listen),
		secs1.WithDeviceID(o.device))
	for _, option := range commonOptions(o) {
		settings = append(settings, secs1.WithConnectionOption(option))
	}
	config, err := secs1.NewConfig(o.address, o.port, settings...)
	if err != nil {
		return nil, err
	}
	return secs1.New(config)
}

func newLink(o options) (*link, error) {
	l := &link{listening: make(chan struct{})}
	var err error
	if o.transport == "hsms" {
		l.Connection, err = newHsms(o, l)
	} else {
		l.Connection, err = newSecs1(o, l)
	}
	return l, err
}

// decodeBody reads a body by the stack's decoder; an empty body has no item.
func decodeBody(digits string) (secs2.Item, error) {
	if digits == "" {
		return nil, nil
	}
	body, err := hex.DecodeString(digits)
	if err != nil {
		return nil, err
	}
	return secs2.DecodeOwned(body)
}
