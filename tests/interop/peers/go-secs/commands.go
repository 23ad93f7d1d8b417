package main

import (
	"context"
	"encoding/json"
	"errors"
	"sync"
	"time"

	"github.com/arloliu/go-secs/v2/hsms"
	"github.com/arloliu/go-secs/v2/secs2"
)

// command is one line of the standard input.
type command struct {
	Do       string          `json:"do"`
	ID       json.RawMessage `json:"id"`
	Stream   byte            `json:"stream"`
	Function byte            `json:"function"`
	Body     string          `json:"body"`
	System   *uint32         `json:"system"`
	Delay    float64         `json:"delay"`
	Reply    []int           `json:"reply"`
	Count    int             `json:"count"`
	On       bool            `json:"on"`
}

// peer is a host or an equipment.
type peer struct {
	link    *link
	events  *events
	answers *answers
	hsms    bool
	t3      time.Duration
	mutex   sync.Mutex
	own     map[uint32]chan *hsms.DataMessage // requests with system bytes that were asked for
}

func idOf(c command) fields {
	if c.ID == nil {
		return fields{}
	}
	return fields{"id": c.ID}
}

// message makes a primary with the system bytes that a command asks for.
func (p *peer) message(c command, wait bool, item secs2.Item) (*hsms.DataMessage, error) {
	system := hsms.ToSystemBytes(*c.System)
	return hsms.NewDataMessage(c.Stream, c.Function, wait, p.link.SessionID(), system, item)
}

// requestWith waits for the reply itself: the stack takes system bytes from outside for messages that it forwards
// only, and hands their replies to the handler of primaries.
func (p *peer) requestWith(c command, item secs2.Item) (*hsms.DataMessage, error) {
	message, err := p.message(c, true, item)
	if err != nil {
		return nil, err
	}
	replies := make(chan *hsms.DataMessage, 1)
	p.mutex.Lock()
	p.own[*c.System] = replies
	p.mutex.Unlock()
	defer func() {
		p.mutex.Lock()
		delete(p.own, *c.System)
		p.mutex.Unlock()
	}()
	if err := p.link.ForwardDataMessage(context.Background(), message); err != nil {
		return nil, err
	}
	select {
	case reply := <-replies:
		return reply, nil
	case <-time.After(p.t3):
		return nil, hsms.ErrT3Timeout
	}
}

func (p *peer) request(c command) {
	item, err := decodeBody(c.Body)
	if err != nil {
		p.events.report(err, idOf(c))
		return
	}
	go func() {
		var reply *hsms.DataMessage
		var err error
		if c.System != nil {
			reply, err = p.requestWith(c, item)
		} else {
			reply, err = p.link.SendDataMessage(context.Background(), c.Stream, c.Function, true, item)
		}
		switch {
		case errors.Is(err, hsms.ErrT3Timeout):
			p.events.emit("timeout", idOf(c))
		case err != nil:
			p.events.report(err, idOf(c))
		default:
			p.events.message("reply", reply, idOf(c))
		}
	}()
}

func (p *peer) send(c command) error {
	item, err := decodeBody(c.Body)
	if err != nil {
		return err
	}
	if c.System == nil {
		_, err = p.link.SendDataMessage(context.Background(), c.Stream, c.Function, false, item)
		return err
	}
	message, err := p.message(c, false, item)
	if err != nil {
		return err
	}
	return p.link.ForwardDataMessage(context.Background(), message)
}

func (p *peer) answer(c command) error {
	what := answer{stream: c.Stream, function: c.Function + 1, echo: c.Body == "echo", left: c.Count,
		delay: time.Duration(c.Delay * float64(time.Second))}
	if len(c.Reply) == 2 {
		what.stream, what.function = byte(c.Reply[0]), byte(c.Reply[1])
	}
	if !what.echo {
		item, err := decodeBody(c.Body)
		if err != nil {
			return err
		}
		what.item = item
	}
	p.answers.tell(messageName{c.Stream, c.Function}, what)
	return nil
}

// perform does one line; false: it was the last one.
func (p *peer) perform(line []byte) bool {
	var c command
	err := json.Unmarshal(line, &c)
	if err == nil {
		switch c.Do {
		case "request":
			p.request(c)
		case "send":
			err = p.send(c)
		case "answer":
			err = p.answer(c)
		case "answer_default":
			p.answers.setDefaults(c.On)
		case "separate":
			if !p.hsms {
				p.events.emit("unsupported", fields{"do": c.Do})
				break
			}
			err = p.link.Close() // the one way in which the stack sends it
		case "disconnect":
			p.link.drop()
		case "quit":
			return false
		default:
			p.events.emit("unsupported", fields{"do": c.Do})
		}
	}
	if err != nil {
		p.events.report(err, idOf(c))
	}
	return true
}

// received runs on the goroutine that reads the line, so that what takes time is done elsewhere.
func (p *peer) received(message *hsms.DataMessage, endpoint hsms.SECS2Endpoint) {
	if !message.IsPrimary() {
		p.mutex.Lock()
		replies, found := p.own[message.ID()]
		delete(p.own, message.ID()) // a second reply is a message like any other
		p.mutex.Unlock()
		if found {
			replies <- message
			return
		}
	}
	p.events.message("received", message, nil)
	if !message.IsPrimary() {
		return
	}
	what, found := p.answers.find(message)
	if !found {
		return
	}
	if what.delay == 0 {
		p.reply(message, endpoint, what)
		return
	}
	time.AfterFunc(what.delay, func() { p.reply(message, endpoint, what) })
}

func (p *peer) reply(message *hsms.DataMessage, endpoint hsms.SECS2Endpoint, what answer) {
	item := what.item
	var err error
	if what.echo {
		if item, err = message.Item(); err != nil {
			p.events.report(err, nil)
			return
		}
	}
	if what.stream == message.Stream() && what.function == message.Function()+1 {
		err = endpoint.ReplyDataMessage(context.Background(), message, item)
	} else {
		var other *hsms.DataMessage
		other, err = hsms.NewDataMessage(what.stream, what.function, false, endpoint.SessionID(),
			message.SystemBytes(), item)
		if err == nil {
			err = endpoint.ForwardDataMessageAsync(context.Background(), other)
		}
	}
	if err != nil {
		p.events.report(err, nil)
	}
}
