package main

import (
	"fmt"

	"github.com/arloliu/go-secs/v2/secs2"
)

// readTree returns a sum of what it reads; of a text or of bytes it is the length, the first and the last one.
func readTree(item secs2.Item) float64 {
	sum := 0.0
	switch node := item.(type) {
	case *secs2.ListItem:
		for i := range node.Size() {
			if child, err := node.ItemAt(i); err == nil {
				sum += readTree(child)
			}
		}
	case *secs2.ASCIIItem:
		if value, err := node.ToASCII(); err == nil && len(value) > 0 {
			sum = float64(len(value) + int(value[0]) + int(value[len(value)-1]))
		}
	case *secs2.BinaryItem:
		if size := node.Size(); size > 0 {
			first, _ := node.ByteAt(0)
			last, _ := node.ByteAt(size - 1)
			sum = float64(size + int(first) + int(last))
		}
	case *secs2.BooleanItem:
		for i := range node.Size() {
			if value, err := node.BoolAt(i); err == nil && value {
				sum++
			}
		}
	case *secs2.UintItem:
		for i := range node.Size() {
			if value, err := node.UintAt(i); err == nil {
				sum += float64(value)
			}
		}
	case *secs2.IntItem:
		for i := range node.Size() {
			if value, err := node.IntAt(i); err == nil {
				sum += float64(value)
			}
		}
	case *secs2.FloatItem:
		for i := range node.Size() {
			if value, err := node.FloatAt(i); err == nil {
				sum += value
			}
		}
	default:
		panic(fmt.Sprintf("no such item in the race: %T", item))
	}
	return sum
}
